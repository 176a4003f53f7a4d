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

/// The text as the inside of a comment: "--" and "?>" are taken apart, characters that XML doesn't allow
/// and bytes from 0x80 up become \xNN.
///
///     CommentText("a--b\x1b?>")   ->  a- -b\x1b? >
[[gnu::visibility("default")]] std::string CommentText(std::string_view text);

}  // namespace Scrivel2

#endif
