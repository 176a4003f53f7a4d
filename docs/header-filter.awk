# Shows the headers to Doxygen as they read: the comment at a file's head is the file's description, and
# a chapter,
#
#     // ---- Scalars (base/Scalars.cpp) ------
#     // Each writes one element of one line.
#
# is a group of members with that title and description, up to the next chapter or the end of its class.
# In prose "<", ">" and the backslash are themselves.

function as_prose(line,    start, prose, parts, count, i) {
  match(line, /\/\/\/<?/)
  start = RSTART + RLENGTH
  prose = substr(line, start)
  if (prose ~ /^     /) {
    return line
  }
  count = split(prose, parts, "\"")
  prose = ""
  for (i = 1; i <= count; i++) {
    if (i % 2) {  # not within quotes, which Doxygen leaves alone
      gsub(/\\/, "&&", parts[i])
      gsub(/</, "\\&lt;", parts[i])
      gsub(/>/, "\\&gt;", parts[i])
    }
    prose = prose (i > 1 ? "\"" : "") parts[i]
  }
  return substr(line, 1, start - 1) prose
}

function close_chapter() {
  if (chapter) {
    print "    /// @}"
    chapter = 0
  }
}

NR == 1 && /^\/\// {
  print "/// @file"
  at_head = 1
}
at_head && /^\/\// {
  sub(/^\/\//, "///")
  print as_prose($0)
  next
}
{ at_head = 0 }

/^ *\/\/ ---- / {
  close_chapter()
  title = $0
  gsub(/^ *\/\/ ---- | -*$/, "", title)
  print "    /// @name " title
  opening = 1
  next
}
opening && /^ *\/\/( |$)/ {
  sub(/\/\//, "///")
  print as_prose($0)
  next
}
opening {
  print "\n    /// @{"
  opening = 0
  chapter = 1
}
/^(};|public:|protected:|private:)/ { close_chapter() }
/\/\/\// {
  print as_prose($0)
  next
}
{ print }
