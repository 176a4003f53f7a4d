// Names and texts that no XML reader refuses.

#ifndef SCRIVEL_LAYER_LOGNAMES_H
#define SCRIVEL_LAYER_LOGNAMES_H

#include <string>
#include <string_view>

namespace Scrivel2
{

/// The text as a name that XML allows and that the generators leave as it is: ASCII letters, "_", and
/// after the first place digits, "-" and ".". Any other character becomes "_", one for one, and so does
/// the second of two "-": a comment may hold the name.
///
///     LegalName("CADIRegRead")   ->  CADIRegRead
///     LegalName("2nd reg:x")     ->  _nd_reg_x
///     LegalName("-x--y")         ->  _x-_y
///     LegalName("")              ->  emptyIdent
[[gnu::visibility("default")]] std::string LegalName(std::string_view text);

/// The name with the local date and time after it, for logs of processes whose ids come again: in
/// containers they often do.
///
///     DatedName("run")   ->  run-20261121-140359
[[gnu::visibility("default")]] std::string DatedName(std::string_view name);

/// The name of a log that overwrites no other: the legal form of `name`, with a number after it when a
/// log of that name is there already, of this process or of an earlier one of the same id. The log's
/// empty file is made in the current directory, so that no one else is given the name.
///
///     UnusedLogName("run")   ->  run      (run-4242.xml now exists)
///     UnusedLogName("run")   ->  run-2
///
/// When no file can be made the name is returned all the same: the generator that opens the log reports
/// the reason.
[[gnu::visibility("default")]] std::string UnusedLogName(std::string_view name);

/// The text as the inside of a comment: "--" is taken apart, characters that XML doesn't allow and bytes
/// from 0x80 up become \xNN.
///
///     CommentText("a--b\x1b")   ->  a- -b\x1b
[[gnu::visibility("default")]] std::string CommentText(std::string_view text);

}  // namespace Scrivel2

#endif
