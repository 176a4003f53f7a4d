// The command line, read by CLI11, whose header takes long to compile: it is included here alone. Tested
// by tests/tool/CommandLineTest.cpp and tests/tool/PagesTest.cpp.

#include "Options.h"

#include <algorithm>

#include <CLI/CLI.hpp>

#include "DidYouMean.h"

namespace ScrivelTool
{

namespace
{

/// CLI11 takes -1 for the largest number and nothing for 0.
std::string RefuseNoNumber(const std::string& text)
{
    const bool isNumber = !text.empty() && text.find_first_not_of("0123456789") == std::string::npos;
    return isNumber ? "" : "\"" + text + "\" is no number";
}

std::string RefuseNothing(const std::string& text)
{
    return text.empty() ? "an empty text says nothing" : "";
}

}  // namespace

struct Options::Parser
{
    Parser(std::string_view summary, std::string name) : line(std::string(summary), std::move(name)) {}

    template <typename Value>
    CLI::Option* AddArgument(const char* name, Value& value, const char* help)
    {
        return line.add_option(name, value, help)->required();
    }

    template <typename Value>
    CLI::Option* Add(const char* names, const char* type, Value& value, const char* help)
    {
        CLI::Option* const option = line.add_option(names, value, help)->type_name(type);
        return group == nullptr ? option : option->group(group);
    }

    CLI::App line;
    const char* group = nullptr;
};

Options::Options(std::string name, std::string_view summary, std::string_view footer)
    : parser(std::make_unique<Parser>(summary, std::move(name)))
{
    parser->line.footer(std::string(footer));
}

Options::~Options() = default;

void Options::Argument(const char* name, std::uint64_t& value, const char* help)
{
    parser->AddArgument(name, value, help)->check(RefuseNoNumber);
}

void Options::Argument(const char* name, std::string& value, const char* help)
{
    parser->AddArgument(name, value, help);
}

void Options::Argument(const char* name, std::vector<std::string>& values, const char* help)
{
    parser->AddArgument(name, values, help);
}

void Options::Flag(const char* names, bool& value, const char* help)
{
    CLI::Option* const option = parser->line.add_flag(names, value, help);
    if (parser->group != nullptr) {
        option->group(parser->group);
    }
}

void Options::Option(const char* names, const char* type, std::uint64_t& value, const char* help)
{
    parser->Add(names, type, value, help)->check(RefuseNoNumber);
}

void Options::Option(const char* names, const char* type, std::optional<std::uint64_t>& value,
                     const char* help)
{
    parser->Add(names, type, value, help)->check(RefuseNoNumber);
}

void Options::Option(const char* names, const char* type, std::string& value, const char* help)
{
    parser->Add(names, type, value, help)->check(RefuseNothing);
}

void Options::Option(const char* names, const char* type, std::vector<std::string>& values,
                     const char* help)
{
    // One value each time, so that the logs that follow stay logs.
    parser->Add(names, type, values, help)
        ->check(RefuseNothing)
        ->expected(1)
        ->allow_extra_args(false)
        ->multi_option_policy(CLI::MultiOptionPolicy::TakeAll);
}

void Options::Choice(const char* names, const char* type, std::string& value,
                     const std::vector<std::string>& words, const char* help)
{
    parser->Add(names, type, value, help)->check(CLI::IsMember(words));
}

void Options::Required(const char* names, const char* type, std::string& value, const char* help)
{
    parser->Add(names, type, value, help)->required();
}

void Options::Exclude(const char* name, const char* other)
{
    parser->line.get_option(name)->excludes(parser->line.get_option(other));
}

void Options::BeginGroup(const char* title)
{
    parser->group = title;
}

Request Options::Read(const std::vector<std::string>& arguments)
{
    try {
        parser->line.parse(std::vector<std::string>(arguments.rbegin(), arguments.rend()));
        return Request::Run;
    } catch (const CLI::CallForHelp&) {
        return Request::Help;
    } catch (const CLI::Error& wrong) {
        error = wrong.what();
    }
    // CLI11 says what is wrong, but not that it is an option that was given again.
    for (const CLI::Option* const option : parser->line.get_options())
        if (option->count() > 1 && option->get_items_expected_max() == 1 &&
            option->get_multi_option_policy() == CLI::MultiOptionPolicy::Throw)
            error = option->get_name() + " is given more than once";
    // An unknown option is answered by the nearest one that there is.
    std::vector<std::string> known;
    for (const OptionText& option : All())
        known.insert(known.end(), option.names.begin(), option.names.end());
    for (const std::string& argument : arguments) {
        const std::string name = argument.substr(0, argument.find('='));
        if (name.size() > 2 && name.compare(0, 2, "--") == 0 &&
            std::find(known.begin(), known.end(), name) == known.end()) {
            error = "there is no option " + name;
            if (const std::string near = Nearest(name, known); !near.empty())
                error += "; did you mean " + near + "?";
            break;
        }
    }
    std::replace(error.begin(), error.end(), '\n', ' ');
    error += " (" + parser->line.get_name() + " --help tells more)";
    return Request::Unclear;
}

std::string Options::Help() const
{
    return parser->line.help();
}

std::vector<OptionText> Options::All() const
{
    std::vector<OptionText> texts;
    for (const CLI::Option* const option : parser->line.get_options()) {
        if (option->get_positional())
            continue;
        OptionText text;
        for (const std::string& name : option->get_snames())
            text.names.push_back("-" + name);
        for (const std::string& name : option->get_lnames())
            text.names.push_back("--" + name);
        if (option->get_items_expected_max() != 0) {
            // CLI11 appends the words that may be chosen: WHEN:{auto,always,never}
            const std::string type = option->get_type_name();
            const std::size_t words = type.find(":{");
            text.value = type.substr(0, words);
            if (words != std::string::npos)
                text.words =
                    Split(std::string_view(type).substr(words + 2, type.size() - words - 3), ',');
        }
        text.help = option->get_description();
        if (option->get_group() != "Options")
            text.group = option->get_group();
        texts.push_back(std::move(text));
    }
    return texts;
}

std::vector<std::string> Options::Arguments() const
{
    std::vector<std::string> names;
    for (const CLI::Option* const option : parser->line.get_options()) {
        if (option->get_positional())
            names.push_back(option->get_name() + (option->get_items_expected_max() > 1 ? "..." : ""));
    }
    return names;
}

std::vector<std::string> Split(std::string_view text, char separator)
{
    std::vector<std::string> parts;
    for (std::size_t begin = 0; begin <= text.size();) {
        const std::size_t end = std::min(text.find(separator, begin), text.size());
        if (end != begin)
            parts.emplace_back(text.substr(begin, end - begin));
        begin = end + 1;
    }
    return parts;
}

}  // namespace ScrivelTool
