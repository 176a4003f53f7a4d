# Gives each heading of a page the name by which other pages link to it: "traps.md#names-and-text" is
# the heading "Names and text" of traps.md.

function page_name(path) {
  sub(/.*\//, "", path)
  sub(/\.md$/, "", path)
  return path
}

function heading_name(text) {
  text = tolower(text)
  gsub(/[^a-z0-9 -]/, "", text)
  gsub(/ /, "-", text)
  return text
}

/^```/ { in_code = !in_code }

!in_code && /^##+ / {
  text = $0
  sub(/^#+ /, "", text)
  print $0 " {#" page_name(FILENAME) "-" heading_name(text) "}"
  next
}
!in_code {
  while (match($0, /\]\([a-z\/-]*(\.md)?#[a-z0-9-]+\)/)) {
    link = substr($0, RSTART + 2, RLENGTH - 3)
    page = substr(link, 1, index(link, "#") - 1)
    name = substr(link, index(link, "#") + 1)
    target = page_name(page == "" ? FILENAME : page) "-" name
    $0 = substr($0, 1, RSTART + 1) "@ref " target substr($0, RSTART + RLENGTH - 1)
  }
}
{ print }
