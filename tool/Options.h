// What the command line of a command may hold. Options.cpp alone knows the library that reads it.

#ifndef SCRIVEL_TOOL_OPTIONS_H
#define SCRIVEL_TOOL_OPTIONS_H

#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace ScrivelTool
{

/// An option as help, completions and the man page tell of it.
struct OptionText
{
    std::vector<std::string> names;  ///< "-n", "--name"
    std::string value;               ///< "GLOB,..."; empty for a flag
    std::vector<std::string> words;  ///< those that the value may be; empty when it may be any
    std::string help;
    std::string group;  ///< empty for an option of the command's own
};

/// What a line asks for.
enum class Request
{
    Run,
    Help,
    Unclear,
};

/// What a line is read into stays where it is, with its default, when the line doesn't name it; it must
/// live as long as the options. Names are given as "-n,--name".
class Options
{
public:
    Options(std::string name, std::string_view summary, std::string_view footer);
    ~Options();
    Options(const Options&) = delete;
    Options& operator=(const Options&) = delete;

    // ---- What stands at its place, without a name; it must be there ----------------------------------
    void Argument(const char* name, std::uint64_t& value, const char* help);
    void Argument(const char* name, std::string& value, const char* help);
    /// One or more, up to the end of the line.
    void Argument(const char* name, std::vector<std::string>& values, const char* help);

    // ---- What has a name, and may be left out --------------------------------------------------------
    void Flag(const char* names, bool& value, const char* help);
    void Option(const char* names, const char* type, std::uint64_t& value, const char* help);
    void Option(const char* names, const char* type, std::optional<std::uint64_t>& value,
                const char* help);
    void Option(const char* names, const char* type, std::string& value, const char* help);
    /// May be given several times.
    void Option(const char* names, const char* type, std::vector<std::string>& values, const char* help);
    void Choice(const char* names, const char* type, std::string& value,
                const std::vector<std::string>& words, const char* help);
    /// Must be there all the same.
    void Required(const char* names, const char* type, std::string& value, const char* help);

    /// Two that were told already, and mustn't be given both.
    void Exclude(const char* name, const char* other);

    /// What --help has in common as a heading over the options that follow.
    void BeginGroup(const char* title);

    // ---- The line ------------------------------------------------------------------------------------
    Request Read(const std::vector<std::string>& arguments);
    /// What is wrong with the line that was read, in one line.
    const std::string& Error() const { return error; }
    std::string Help() const;

    // ---- What was told -------------------------------------------------------------------------------
    std::vector<OptionText> All() const;
    /// "N", "LOG..."
    std::vector<std::string> Arguments() const;

private:
    struct Parser;
    std::unique_ptr<Parser> parser;
    std::string error;
};

/// The parts between the separators; what is empty is left out.
std::vector<std::string> Split(std::string_view text, char separator);

}  // namespace ScrivelTool

#endif
