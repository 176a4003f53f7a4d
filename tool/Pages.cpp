// Completions and the man page: every command and every option is in them, as its parser names them.
// Tested by tests/tool/PagesTest.cpp.

#include "Pages.h"

#include <algorithm>
#include <memory>
#include <vector>

#include "LogArguments.h"
#include "Options.h"
#include "Version.h"

namespace ScrivelTool
{

namespace
{

struct CommandText
{
    std::string name;  // empty for what runs without a command
    std::string summary;
    std::string note;
    std::vector<std::string> examples;
    std::vector<std::string> arguments;  // "N", "LOG..."
    std::vector<OptionText> options;
};

std::string Join(const std::vector<std::string>& parts, std::string_view separator)
{
    std::string joined;
    for (const std::string& part : parts)
        joined += (joined.empty() ? "" : std::string(separator)) + part;
    return joined;
}

std::string Replaced(std::string text, std::string_view what, std::string_view by)
{
    for (std::size_t at = text.find(what); at != std::string::npos; at = text.find(what, at + by.size()))
        text.replace(at, what.size(), by);
    return text;
}

CommandText TextOf(const Command& command)
{
    Options options({}, {}, {});
    const std::unique_ptr<Action> action = command.make(options);
    return {std::string(command.name),     std::string(command.summary), std::string(command.note),
            Split(command.examples, '\n'), options.Arguments(),          options.All()};
}

std::vector<CommandText> TextOf(const Commands& commands)
{
    std::vector<CommandText> texts;
    for (const Command& command : commands)
        texts.push_back(TextOf(command));
    return texts;
}

bool IsFilter(const OptionText& option)
{
    return option.group == FilterArguments::group;
}

bool NamesFile(const OptionText& option)
{
    return option.value == "FILE" || option.value == "LOG" || option.value == "FOLDER" ||
           option.value == "PAGE";
}

/// What a line may begin with in place of a command.
std::vector<OptionText> FirstOptions()
{
    return {{{"--version"}, "", {}, "the version, and what it reads", ""},
            {{"--man"}, "", {}, "the man page", ""},
            {{"--completion"}, "SHELL", {"bash", "zsh", "fish"}, "what completes words in a shell", ""}};
}

// ---- bash
// -----------------------------------------------------------------------------------------------

/// The names of the options for which `chosen` holds, between blanks.
template <typename Chosen>
std::string Names(const CommandText& command, Chosen chosen)
{
    std::string names;
    for (const OptionText& option : command.options)
        if (chosen(option))
            names += " " + Join(option.names, " ");
    return names.empty() ? "" : names.substr(1);
}

/// What is offered in the first place, besides the commands.
std::string FirstForBash()
{
    std::string names;
    std::string words;
    for (const OptionText& option : FirstOptions()) {
        names += " " + Join(option.names, " ");
        if (!option.words.empty())
            words += "    if ((COMP_CWORD == 2)) && [[ $before == " + option.names.front() +
                     " ]]; then\n        words='" + Join(option.words, " ") + "'\n    fi\n";
    }
    return "    ((COMP_CWORD > 1)) || options+='" + names + "'\n" + words;
}

std::string ForBash(const std::vector<CommandText>& commands)
{
    std::string names;
    std::string cases;
    for (const CommandText& command : commands) {
        if (!command.name.empty())
            names += command.name + " ";
        cases += "        " + (command.name.empty() ? "''" : command.name) + ")\n            options='" +
                 Names(command, [](const OptionText&) { return true; }) + "'\n            values='" +
                 Names(command,
                       [](const OptionText& option) {
                           return !option.value.empty() && option.words.empty() && !NamesFile(option);
                       }) +
                 "'\n";
        for (const OptionText& option : command.options)
            if (!option.words.empty())
                cases += "            [[ ' " + Join(option.names, " ") +
                         " ' != *\" $before \"* ]] || words='" + Join(option.words, " ") + "'\n";
        cases += "            ;;\n";
    }
    return "# Completes the words of scrivel in bash.\n"
           "_scrivel()\n"
           "{\n"
           "    local commands='" +
           names +
           "help'\n"
           "    local word=${COMP_WORDS[COMP_CWORD]} before=${COMP_WORDS[COMP_CWORD - 1]} command=''\n"
           "    local options='' values='' words=''\n"
           "    COMPREPLY=()\n"
           "    if ((COMP_CWORD > 1)) && [[ \" $commands \" == *\" ${COMP_WORDS[1]} \"* ]]; then\n"
           "        command=${COMP_WORDS[1]}\n"
           "    fi\n"
           "    case $command in\n" +
           cases + "        help) words='" + names +
           "' ;;\n"
           "    esac\n" +
           FirstForBash() +
           "    if [[ $words ]]; then\n"
           "        mapfile -t COMPREPLY < <(compgen -W \"$words\" -- \"$word\")\n"
           "    elif [[ $word == -* ]]; then\n"
           "        mapfile -t COMPREPLY < <(compgen -W \"$options\" -- \"$word\")\n"
           "    elif [[ \" $values \" != *\" $before \"* ]]; then\n"
           "        ((COMP_CWORD > 1)) || words=$commands\n"
           "        mapfile -t COMPREPLY < <(compgen -W \"$words\" -- \"$word\"; compgen -f -- "
           "\"$word\")\n"
           "    fi\n"
           "}\n"
           "complete -o filenames -F _scrivel scrivel\n";
}

// ---- zsh
// ------------------------------------------------------------------------------------------------

std::string InQuotes(const std::string& text)
{
    return "'" + Replaced(text, "'", "'\\''") + "'";
}

/// -C and --context: '(-C --context)'{-C,--context}'[help]:N: '
std::string ForZsh(const OptionText& option)
{
    std::string help = Replaced(Replaced(option.help, "[", "\\["), "]", "\\]");
    std::string tail = "[" + help + "]";
    if (!option.value.empty())
        tail += ":" + Replaced(option.value, ":", "\\:") + ":" +
                (!option.words.empty() ? "(" + Join(option.words, " ") + ")"
                 : NamesFile(option)   ? "_files"
                                       : " ");
    if (option.names.size() == 1)
        return InQuotes(option.names[0] + tail);
    return "'(" + Join(option.names, " ") + ")'{" + Join(option.names, ",") + "}" + InQuotes(tail);
}

std::string ForZsh(const std::vector<CommandText>& commands)
{
    std::string list;
    std::string cases;
    for (const CommandText& command : commands) {
        if (!command.name.empty())
            list +=
                "        " + InQuotes(command.name + ":" + Replaced(command.summary, ":", "\\:")) + "\n";
        cases +=
            "        " + (command.name.empty() ? "''" : command.name) + ")\n            _arguments -s";
        for (const OptionText& option : command.options)
            cases += " \\\n                " + ForZsh(option);
        if (command.name.empty())
            for (const OptionText& option : FirstOptions())
                cases += " \\\n                '(- *)'" + ForZsh(option);
        cases += " \\\n                '*:log:_files'\n            ;;\n";
    }
    return "#compdef scrivel\n"
           "# Completes the words of scrivel in zsh.\n"
           "_scrivel()\n"
           "{\n"
           "    local -a commands=(\n" +
           list +
           "        'help:a command and its options'\n"
           "    )\n"
           "    local command=''\n"
           "    if ((CURRENT == 2)) && [[ $words[2] != -* ]]; then\n"
           "        _describe -t commands command commands\n"
           "        _files\n"
           "        return\n"
           "    fi\n"
           "    if ((${commands[(I)$words[2]:*]})); then\n"
           "        command=$words[2]\n"
           "        shift words\n"
           "        ((CURRENT -= 1))\n"
           "    fi\n"
           "    case $command in\n" +
           cases +
           "        help)\n"
           "            commands[-1]=()\n"
           "            _describe -t commands command commands\n"
           "            ;;\n"
           "    esac\n"
           "}\n"
           "_scrivel \"$@\"\n";
}

// ---- fish
// -----------------------------------------------------------------------------------------------

std::string InFishQuotes(const std::string& text)
{
    return "'" + Replaced(Replaced(text, "\\", "\\\\"), "'", "\\'") + "'";
}

/// -C and --context:  -s C -l context -x -d 'help'
std::string ForFish(const OptionText& option)
{
    std::string text;
    for (const std::string& name : option.names)
        text += name[1] == '-' ? " -l " + name.substr(2) : " -s " + name.substr(1);
    if (!option.words.empty())
        text += " -xa '" + Join(option.words, " ") + "'";
    else if (!option.value.empty())
        text += NamesFile(option) ? " -r" : " -x";
    return text + " -d " + InFishQuotes(option.help) + "\n";
}

std::string ForFish(const std::vector<CommandText>& commands)
{
    std::string names;
    for (const CommandText& command : commands)
        names += command.name.empty() ? "" : " " + command.name;
    const std::string before = "complete -c scrivel -n ";
    std::string text = "# Completes the words of scrivel in fish.\n";
    for (const OptionText& option : FirstOptions())
        text += before + "__fish_use_subcommand" + ForFish(option);
    text += before + "__fish_use_subcommand -a help -d 'a command and its options'\n" + before +
            "'__fish_seen_subcommand_from help; and not __fish_seen_subcommand_from" + names + "' -xa '" +
            names.substr(1) + "'\n";
    for (const CommandText& command : commands) {
        std::string where = "'__fish_seen_subcommand_from " + command.name + "'";
        if (command.name.empty())
            where = "'not __fish_seen_subcommand_from help" + names + "'";
        else
            text += before + "__fish_use_subcommand -a " + command.name + " -d " +
                    InFishQuotes(command.summary) + "\n";
        for (const OptionText& option : command.options)
            text += before + where + ForFish(option);
    }
    return text;
}

// ---- man
// ------------------------------------------------------------------------------------------------

/// Text of which man takes no character for a macro or an escape.
std::string ForMan(const std::string& text)
{
    std::string safe = Replaced(Replaced(text, "\\", "\\e"), "-", "\\-");
    safe = Replaced(Replaced(std::move(safe), "'", "\\(aq"), "~", "\\(ti");
    return !safe.empty() && safe[0] == '.' ? "\\&" + safe : safe;
}

std::string ForMan(const OptionText& option)
{
    std::vector<std::string> names;
    for (const std::string& name : option.names)
        names.push_back("\\fB" + ForMan(name) + "\\fR");
    std::string text = ".TP\n" + Join(names, ", ");
    if (!option.value.empty())
        text += " \\fI" + ForMan(option.value) + "\\fR";
    return text + "\n" + ForMan(option.help) + "\n";
}

std::string UseForMan(const CommandText& command)
{
    std::string text = ".B scrivel";
    if (!command.name.empty())
        text += " " + ForMan(command.name);
    text += "\n[\\fIOPTIONS\\fR]";
    for (const std::string& argument : command.arguments)
        text += " \\fI" + ForMan(argument) + "\\fR";
    return text + "\n";
}

std::string CommandsForMan(const std::vector<CommandText>& commands)
{
    std::string text = ".SH COMMANDS\n";
    for (const CommandText& command : commands) {
        text += ".SS " + (command.name.empty() ? "Without a command" : ForMan(command.name)) + "\n" +
                UseForMan(command) + ".PP\n" + ForMan(command.summary) + ".\n";
        if (!command.note.empty())
            text += ".PP\n" + ForMan(command.note) + "\n";
        bool hasFilter = false;
        for (const OptionText& option : command.options) {
            hasFilter = hasFilter || IsFilter(option);
            if (!IsFilter(option))
                text += ForMan(option);
        }
        if (hasFilter)
            text += ".PP\nAnd the options that choose calls, see\n.BR \"CHOOSING CALLS\" .\n";
        text += ".PP\nExamples:\n.PP\n.nf\n";
        for (const std::string& example : command.examples)
            text += "    " + ForMan(example) + "\n";
        text += ".fi\n";
    }
    return text;
}

/// The options that are the same for every command that reads calls, once.
std::string FilterForMan(const std::vector<CommandText>& commands)
{
    std::vector<std::string> told;
    std::string text;
    for (const CommandText& command : commands) {
        for (const OptionText& option : command.options) {
            const std::string names = Join(option.names, " ");
            if (IsFilter(option) && std::find(told.begin(), told.end(), names) == told.end()) {
                told.push_back(names);
                text += ForMan(option);
            }
        }
    }
    return text;
}

}  // namespace

std::optional<std::string> Completion(std::string_view shell, const Commands& commands)
{
    if (shell == "bash")
        return ForBash(TextOf(commands));
    if (shell == "zsh")
        return ForZsh(TextOf(commands));
    if (shell == "fish")
        return ForFish(TextOf(commands));
    return {};
}

std::string ManPage(const Commands& table)
{
    const std::vector<CommandText> commands = TextOf(table);
    return ".TH SCRIVEL 1 \"\" \"scrivel " + std::string(version) +
           "\" \"User Commands\"\n"
           ".SH NAME\n"
           "scrivel \\- tell what a log of CADI calls says\n"
           ".SH SYNOPSIS\n"
           ".B scrivel\n"
           "\\fICOMMAND\\fR [\\fIOPTIONS\\fR] \\fILOG\\fR...\n"
           ".PP\n"
           ".B scrivel\n"
           "\\fB\\-\\-help\\fR | \\fB\\-\\-version\\fR | \\fB\\-\\-man\\fR | \\fB\\-\\-completion\\fR "
           "bash | zsh | fish\n"
           ".SH DESCRIPTION\n"
           "Reads the XML logs that ScrivelXmlGen writes of the calls between a debugger and a "
           "simulation:\n"
           "files, folders of them, or \\- for standard input; compressed ones too.\n"
           "A log may be damaged, cut short or still in the process's hands.\n" +
           CommandsForMan(commands) +
           ".SH CHOOSING CALLS\n"
           "Every command that reads calls takes these options; where \\fB\\-\\-to\\fR is another "
           "option,\n"
           "\\fB\\-\\-until\\fR takes its place. A call must fit all that are given.\n" +
           FilterForMan(commands) +
           ".PP\n"
           "An expression has\n"
           ".BR and ,\n"
           ".BR or ,\n"
           ".BR not ,\n"
           "parentheses, and comparisons of a field with a value by = != < <= > >=, \\(ti (contains) "
           "and\n"
           "!\\(ti (doesn\\(aqt). The fields are\n"
           ".BR \"name status thread number took time return parent address\" ,\n"
           ".BI arg. PATH\n"
           "and\n"
           ".BI result. PATH\n"
           "for any argument or result whose path ends so, and alone\n"
           ".BR \"failed open returned\" .\n"
           "Whole numbers from zero on are compared as numbers, whatever base they are written in, "
           "everything else as text.\n"
           ".SH EXIT STATUS\n"
           ".TP\n.B 0\nSomething was found; the logs are whole.\n"
           ".TP\n.B 1\nNothing was found; a log is not whole, or not what \\fBcheck\\fR was asked for.\n"
           ".TP\n.B 2\nThe command line is wrong, a log can\\(aqt be read, or a file can\\(aqt be "
           "written.\n"
           ".SH ENVIRONMENT\n"
           ".TP\n.B NO_COLOR\nWhen set, nothing is coloured unless \\fB\\-\\-color\\fR says so.\n"
           ".TP\n.B SCRIVEL_PAGER\n.TQ\n.B PAGER\nShow what is longer than the terminal.\n"
           ".TP\n.B COLUMNS\nHow wide a line may be.\n";
}

}  // namespace ScrivelTool
