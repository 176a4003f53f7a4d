// Completions and the man page beside what --help says of each command.

#include <cstdlib>
#include <regex>
#include <set>
#include <sstream>
#include <string>
#include <tuple>
#include <vector>

#include <gmock/gmock.h>

#include "tool/Program.h"

using namespace ScrivelTest;
using testing::Contains;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsSupersetOf;
using testing::Not;

namespace
{

using Words = std::set<std::string>;

std::vector<std::string> Lines(const std::string& text)
{
    std::vector<std::string> lines;
    std::istringstream stream(text);
    for (std::string line; std::getline(stream, line);)
        lines.push_back(line);
    return lines;
}

class Pages : public ToolTest
{
protected:
    Words Commands() const
    {
        Words commands;
        bool listed = false;
        for (const std::string& line : Lines(Run({"--help"}).out)) {
            listed = (listed && !line.empty()) || line == "Commands:";
            if (listed && line[0] == ' ')
                commands.insert(line.substr(2, line.find(' ', 2) - 2));
        }
        return commands;
    }

    /// "-n" and "--name" of `-n,--name GLOB,...`.
    Words OptionsOf(const std::string& command) const
    {
        static const std::regex pattern("^  (-[A-Za-z])?,?(--[a-z-]+)?( .*)?$");
        Words options;
        for (const std::string& line : Lines(Run({command, "--help"}).out)) {
            std::smatch found;
            if (!std::regex_match(line, found, pattern))
                continue;
            for (const std::size_t name : {1U, 2U})
                if (found[name].matched)
                    options.insert(found[name]);
        }
        return options;
    }

    /// What bash offers in place of the last word.
    std::vector<std::string> Completed(const std::vector<std::string>& words) const
    {
        Write("completion", Run({"--completion", "bash"}).out);
        std::string line;
        for (const std::string& word : words)
            line += " " + Quoted(word);
        Write("complete.sh", ". ./completion\nCOMP_WORDS=(scrivel" + line +
                                 ")\nCOMP_CWORD=" + std::to_string(words.size()) +
                                 "\n_scrivel\nprintf '%s\\n' \"${COMPREPLY[@]}\" >completed\n");
        EXPECT_EQ(std::system(("cd " + Quoted(Folder()) + " && bash complete.sh").c_str()), 0);
        return Lines(Read("completed"));
    }

    bool Shell(const std::string& shell, const std::string& script) const
    {
        Write("script", script);
        return std::system(("cd " + Quoted(Folder()) + " && " + shell + " script").c_str()) == 0;
    }
};

TEST_F(Pages, HelpShowsTwoExamplesOfEachCommand)
{
    const Words commands = Commands();
    EXPECT_THAT(commands, IsSupersetOf({"calls", "show"}));
    for (const std::string& command : commands) {
        const std::string help = Run({command, "--help"}).out;
        const std::size_t examples = help.find("Examples:\n");
        ASSERT_NE(examples, std::string::npos) << command;
        int count = 0;
        for (const std::string& line : Lines(help.substr(examples)))
            count += line.rfind("  scrivel ", 0) == 0 ? 1 : 0;
        EXPECT_EQ(count, 2) << command;
    }
}

TEST_F(Pages, HelpShowsTwoExamplesOfWhatNeedsNoCommand)
{
    EXPECT_THAT(Run({"--help"}).out,
                HasSubstr("Examples:\n  scrivel crash-4242.xml\n  scrivel logs/\n\n"));
    EXPECT_THAT(Run({"--man"}).out, HasSubstr(".SS Without a command\n"));
}

TEST_F(Pages, ManPageHasEachOptionOfEachCommand)
{
    const std::string page = Run({"--man"}).out;
    const std::string filter = page.substr(page.find(".SH CHOOSING CALLS\n"));
    for (const std::string& command : Commands()) {
        const std::size_t begin = page.find(".SS " + command + "\n");
        ASSERT_NE(begin, std::string::npos) << command;
        const std::string section = page.substr(begin, page.find("\n.S", begin + 1) - begin);
        const Words options = OptionsOf(command);
        EXPECT_THAT(options, Contains("--help")) << command;
        for (const std::string& option : options) {
            const std::string name = "\\fB" + std::regex_replace(option, std::regex("-"), "\\-") + "\\fR";
            EXPECT_NE((section + filter).find(name), std::string::npos) << command << " " << option;
        }
    }
}

TEST_F(Pages, BashCompletesEachOptionOfEachCommand)
{
    for (const std::string& command : Commands()) {
        const std::vector<std::string> offered = Completed({command, "-"});
        EXPECT_EQ(Words(offered.begin(), offered.end()), OptionsOf(command)) << command;
    }
}

TEST_F(Pages, BashCompletesCommandsWordsAndLogs)
{
    Write("calm.xml", LogOf(""));
    EXPECT_THAT(Completed({"cal"}), ElementsAre("calls", "calm.xml"));
    EXPECT_THAT(Completed({"-"}), IsSupersetOf({"--json", "--color"}));
    EXPECT_THAT(Completed({"help", "cal"}), ElementsAre("calls"));
    EXPECT_THAT(Completed({"calls", "--color", "a"}), ElementsAre("auto", "always"));
    EXPECT_THAT(Completed({"calls", "--last", ""}), ElementsAre(""));
    EXPECT_THAT(Completed({"calls", "cal"}), ElementsAre("calm.xml"));
}

TEST_F(Pages, ZshAndFishHaveEachOption)
{
    const std::string zsh = Run({"--completion", "zsh"}).out;
    const std::string fish = Run({"--completion", "fish"}).out;
    for (const std::string& command : Commands()) {
        EXPECT_THAT(zsh, HasSubstr("        " + command + ")\n"));
        const std::size_t begin = zsh.find("        " + command + ")\n");
        const std::string section = zsh.substr(begin, zsh.find(";;", begin) - begin);
        std::string forFish;
        for (const std::string& line : Lines(fish))
            if (line.find("'__fish_seen_subcommand_from " + command + "'") != std::string::npos)
                forFish += line + "\n";
        for (const std::string& option : OptionsOf(command)) {
            EXPECT_TRUE(std::regex_search(section, std::regex("['{,]" + option + "[\\[,}]")))
                << command << " " << option;
            const bool isLong = option[1] == '-';
            EXPECT_THAT(forFish, HasSubstr(isLong ? " -l " + option.substr(2) + " "
                                                  : " -s " + option.substr(1) + " "));
        }
    }
}

TEST_F(Pages, EachShellCompletesFilesWhereAnOptionTakesOne)
{
    Write("calm.xml", LogOf(""));
    const std::string zsh = Run({"--completion", "zsh"}).out;
    const std::string fish = Run({"--completion", "fish"}).out;
    for (const auto& [command, option, value] :
         std::vector<std::tuple<std::string, std::string, std::string>>{{"check", "junit", "FILE"},
                                                                        {"diff", "with", "LOG"},
                                                                        {"report", "output", "FOLDER"},
                                                                        {"view", "output", "PAGE"}}) {
        EXPECT_THAT(Completed({command, "--" + option, "cal"}), ElementsAre("calm.xml")) << command;
        EXPECT_THAT(zsh, HasSubstr(":" + value + ":_files'"));
        EXPECT_TRUE(std::regex_search(
            fish, std::regex("seen_subcommand_from " + command + "'[^\n]* -l " + option + " -r ")))
            << command;
    }
}

TEST_F(Pages, EachShellCompletesWhatStandsInPlaceOfACommand)
{
    EXPECT_THAT(Completed({"--"}), IsSupersetOf({"--version", "--man", "--completion"}));
    EXPECT_THAT(Completed({"run.xml", "--"}), Not(Contains("--version")));
    EXPECT_THAT(Completed({"--completion", ""}), ElementsAre("bash", "zsh", "fish"));
    const std::string zsh = Run({"--completion", "zsh"}).out;
    const std::string fish = Run({"--completion", "fish"}).out;
    for (const std::string option : {"version", "man", "completion"}) {
        EXPECT_THAT(zsh, HasSubstr("'(- *)''--" + option + "["));
        EXPECT_THAT(fish, HasSubstr("__fish_use_subcommand -l " + option + " "));
    }
    EXPECT_THAT(zsh, HasSubstr("(bash zsh fish)"));
    EXPECT_THAT(fish, HasSubstr(" -l completion -xa 'bash zsh fish'"));
}

TEST_F(Pages, HelpIsCompletedByCommandsAlone)
{
    const std::vector<std::string> offered = Completed({"help", ""});
    EXPECT_EQ(Words(offered.begin(), offered.end()), Commands());
    EXPECT_THAT(Completed({"hel"}), ElementsAre("help"));
}

TEST_F(Pages, ManPageTellsWhichNameTheEndOfTheTimesHas)
{
    EXPECT_THAT(Run({"--man"}).out,
                HasSubstr("takes these options; where \\fB\\-\\-to\\fR is another option,\n"
                          "\\fB\\-\\-until\\fR takes its place."));
}

TEST_F(Pages, HelpTellsWhereTheOptionsWithoutACommandAreTold)
{
    EXPECT_THAT(Run({"--help"}).out, HasSubstr("\nscrivel --json --help tells them.\n"));
    EXPECT_THAT(Run({"--json", "--help"}).out, HasSubstr("\n  -f,--failed "));
}

TEST_F(Pages, ZshTakesItsCompletion)
{
    if (std::system("command -v zsh >/dev/null") != 0)
        GTEST_SKIP() << "there is no zsh";
    EXPECT_TRUE(Shell("zsh -n", Run({"--completion", "zsh"}).out));
}

TEST_F(Pages, FishCompletesOptions)
{
    if (std::system("command -v fish >/dev/null") != 0)
        GTEST_SKIP() << "there is no fish";
    EXPECT_TRUE(Shell("HOME=$PWD fish", Run({"--completion", "fish"}).out +
                                            "complete --do-complete 'scrivel calls --las' >completed\n"));
    EXPECT_THAT(Read("completed"), HasSubstr("--last"));
    EXPECT_TRUE(Shell("HOME=$PWD fish", Run({"--completion", "fish"}).out +
                                            "complete --do-complete 'scrivel help ' >completed\n"));
    const std::string offered = "\n" + Read("completed");
    EXPECT_THAT(offered, HasSubstr("\ncalls\n"));
    EXPECT_THAT(offered, Not(HasSubstr("\nhelp")));
}

TEST_F(Pages, NoOtherShellIsCompleted)
{
    const Outcome outcome = Run({"--completion", "csh"});
    EXPECT_EQ(outcome.error, "scrivel: --completion is for bash, zsh or fish\n");
    EXPECT_EQ(outcome.status, 2);
}

}  // namespace
