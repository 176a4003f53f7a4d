// What the layer tells the readers of a log in comments.

#ifndef SCRIVEL_LAYER_LOGCOMMENTS_H
#define SCRIVEL_LAYER_LOGCOMMENTS_H

#include <string>
#include <string_view>

namespace Scrivel2::Layer
{

/// The last comment of a log that was ended: one without it was cut off.
[[gnu::visibility("default")]] std::string EndComment();

/// The last comment of a file that is full, and the first one of the file after it. Both name the other
/// file without its folder.
[[gnu::visibility("default")]] std::string ContinuedInComment(std::string_view nextFile);
[[gnu::visibility("default")]] std::string ContinuedFromComment(std::string_view fileBefore);

}  // namespace Scrivel2::Layer

#endif
