// Keeps the file of a log as it is at one moment of a snippet, for what the documentation shows.

#include "docs/Snippets.h"

#include <filesystem>

namespace ScrivelDocs
{

namespace fs = std::filesystem;

void KeepMoment(const std::string& moment)
{
    for (const auto& entry : fs::directory_iterator(".")) {
        if (entry.path().extension() == ".xml") {
            fs::copy_file(entry.path(), moment + ".moment");
            return;
        }
    }
}

}  // namespace ScrivelDocs
