// Tells a process from the one that it was forked from.

#ifndef SCRIVEL_LAYER_FORKCOUNT_H
#define SCRIVEL_LAYER_FORKCOUNT_H

namespace Scrivel2::Layer
{

/// How many forks lie between this process and the one that loaded the library. A child's number
/// differs from its parent's, so a log knows in which of the two it was started.
[[gnu::visibility("default")]] unsigned int ForkCount();

}  // namespace Scrivel2::Layer

#endif
