// Texts about the command line, made from the table of commands: completions for shells, the man page.

#ifndef SCRIVEL_TOOL_PAGES_H
#define SCRIVEL_TOOL_PAGES_H

#include <optional>
#include <string>
#include <string_view>

#include "Command.h"

namespace ScrivelTool
{

/// What a shell loads to complete the words of scrivel; nothing for a shell other than bash, zsh and
/// fish.
std::optional<std::string> Completion(std::string_view shell, const Commands& commands);

/// The man page scrivel(1), in the macros of man(7).
std::string ManPage(const Commands& commands);

}  // namespace ScrivelTool

#endif
