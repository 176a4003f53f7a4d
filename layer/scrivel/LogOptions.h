// What the one who makes a log may choose, and what the environment of the process makes of it.

#ifndef SCRIVEL_LAYER_LOGOPTIONS_H
#define SCRIVEL_LAYER_LOGOPTIONS_H

#include <string>
#include <string_view>

namespace Scrivel2
{

/// How a log is kept. Each choice has an environment variable for whoever runs a program that can't be
/// compiled anew. What it says counts, whatever the program chooses; empty it says nothing.
///
///     Scrivel2::LogOptions options;
///     options.folder = "logs";
///     Scrivel2::RunLog log("run", options);     // logs/run-4242.xml
struct LogOptions
{
    /// Where the log's file is made; empty for the current directory. A folder that doesn't exist is
    /// made, with all those above it. SCRIVEL_LOG_DIR takes the place of this and of the folder in the
    /// log's name.
    ///
    ///     name        folder   SCRIVEL_LOG_DIR
    ///     run                                    run-4242.xml
    ///     logs/run                               logs/run-4242.xml
    ///     run         out                        out/run-4242.xml
    ///     logs/run    out                        out/logs/run-4242.xml
    ///     logs/run    out      /tmp/mine         /tmp/mine/run-4242.xml
    std::string folder{};
};

namespace Layer
{

/// A log's options with what the environment says in their place, and its name and folder apart.
struct Settings
{
    Settings(std::string_view logName, const LogOptions& options);

    std::string name;
    std::string folder;
};

}  // namespace Layer

}  // namespace Scrivel2

#endif
