// scrivel view: a page of HTML that shows logs. Tested by tests/tool/ViewTest.cpp and tests/page.

#include <memory>
#include <string>
#include <utility>
#include <vector>

#include "Command.h"
#include "HtmlPage.h"
#include "KnownText.h"
#include "LogArguments.h"
#include "Options.h"
#include "OutputFile.h"

namespace ScrivelTool
{

using namespace ScrivelReader;

namespace
{

class View final : public ReadingAction
{
public:
    explicit View(Options& options)
    {
        logs.AddTo(options);
        options.Required("-o,--output", "PAGE", output, "the page to be written");
        options.Flag("--force", force, "replace the file if there is one");
        options.Option("--around", "N", page.around,
                       "of a log with more calls than a page holds, those around call N");
        filter.AddTo(options);
    }

    Exit Read(CallFilter chosen, Terminal& terminal) override
    {
        page.filter = std::move(chosen);
        bool trouble = false;
        const std::vector<std::string> paths = logs.Logs(terminal, trouble);
        std::string error;
        const auto file =
            OutputFile::Make(output, force ? Existing::Replace : Existing::Keep, paths, error);
        if (file == nullptr) {
            terminal.Error(output, {}, error);
            return Exit::Trouble;
        }
        const auto written = WritePage(paths, page, *file, terminal);
        if (!written)
            return Exit::Trouble;
        if (!file->Finish()) {
            terminal.Error(output, {}, file->Error());
            return Exit::Trouble;
        }
        std::string text = Printable(output) + ": " + CountText(written->calls, "call");
        if (written->kept < written->calls)
            text += ", " + std::to_string(written->kept) + " of them in the page";
        terminal.Print(text + "\n");
        return trouble || written->trouble ? Exit::Trouble : Exit::Found;
    }

private:
    std::string output;
    bool force = false;
    PageOptions page;
};

}  // namespace

std::unique_ptr<Action> MakeView(Options& options)
{
    return std::make_unique<View>(options);
}

}  // namespace ScrivelTool
