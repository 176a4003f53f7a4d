// What the layer tells the readers of a log in comments.

#ifndef SCRIVEL_LAYER_LOGCOMMENTS_H
#define SCRIVEL_LAYER_LOGCOMMENTS_H

#include <string>

namespace Scrivel2::Layer
{

/// The last comment of a log that was ended: one without it was cut off.
std::string EndComment();

}  // namespace Scrivel2::Layer

#endif
