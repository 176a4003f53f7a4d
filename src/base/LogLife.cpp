// The life of a log: its file, header and end, the closing text after each flush, comments between calls.
// Tested by tests/base/LogLifeTest.cpp, comments by tests/base/CallFrameTest.cpp.

#include "base/SharedRecords.h"
#include "format/LogWords.h"

#include <cerrno>
#include <cstring>
#include <ctime>
#include <iostream>

#include <unistd.h>

namespace Scrivel2
{

ScrivelXmlGenBase::ScrivelXmlGenBase(const char* name, const char* version)
    : logName(name), cadiVersion(version), writeSecure(true), lastFilePos(0), callNo(0), depth(0),
      callOpen(false), startTime(), factoryErrorNames(FactoryErrorNames()), mendsNames(false),
      checkLongName(nullptr), tagKeeper(nullptr), entryIsKept(false), processOfEndTag(0)
{
    KeepsTags<ScrivelXmlGenBase>();
}

ScrivelXmlGenBase::~ScrivelXmlGenBase() = default;

void ScrivelXmlGenBase::SetWriteSecure(bool secure)
{
    writeSecure = secure;
}

void ScrivelXmlGenBase::StartLogging()
{
    callNo = 0;
    depth = 0;

    const std::string fileName = logName + "-" + std::to_string(getpid()) + ".xml";
    errno = 0;
    logFile.open(fileName);
    if (!logFile.good()) {
        std::cerr << "Scrivel: Unable to open logfile \"" << fileName << "\"." << std::endl;
        if (errno != 0) {
            std::cerr << "    Error given by OS: " << std::strerror(errno) << std::endl;
        }
    }
    WriteHeader();
}

void ScrivelXmlGenBase::WriteHeader()
{
    logFile.Append(std::string(LogWords::declaration).append("\n"));
    logFile.Append("<" + logName + "-" + std::to_string(getpid()) + "\n");
    gettimeofday(&startTime, nullptr);

    // The time and the host name share a buffer: a host name that can't be read is written as the time.
    char text[256] = {};
    const std::time_t now = time(nullptr);
    std::tm local{};
    tzset();  // localtime does so, and its record is shared by all threads
    strftime(text, sizeof text, "%Y-%m-%d %H:%M:%S", localtime_r(&now, &local));
    AppendAttribute(logFile, LogWords::time, text);
    logFile.Append("\n");
    AppendAttribute(logFile, LogWords::cadiVersion, cadiVersion);
    logFile.Append("\n");
    const bool hostKnown = gethostname(text, sizeof text - 1) == 0;
    AppendAttribute(logFile, LogWords::hostName, std::string(text) + (hostKnown ? "" : "*"));
    logFile.Append("\n");
    AppendAttribute(logFile, LogWords::operatingSystem, LogWords::linuxSystem);
    logFile.Append(">\n");

    ++depth;
    FlushOutput(true, "");
}

void ScrivelXmlGenBase::FlushOutput(bool finalTag, std::string callName)
{
    WriteClosingText(finalTag, callName);
    logFile.flush();
}

void ScrivelXmlGenBase::WriteClosingText(bool finalTag, std::string_view callName)
{
    // after a final flush:      ...    </CADIRegRead>\n|</trace-4242>\n
    // after a non-final flush:  ...<regCount>1</regCount>\n|    </CADIRegRead>\n
    //                                                      | = lastFilePos: the next output starts here
    if (!writeSecure) {
        pendingTail.clear();
    } else {
        UpdateFilePointerPosition();
        if (finalTag) {
            pendingTail = FileEndTag();
        } else {
            constexpr std::string_view begin = "    </";
            constexpr std::string_view end = ">\n";
            pendingTail.resize(begin.size() + callName.size() + end.size());
            PutText(PutText(PutText(pendingTail.data(), begin), callName), end);
        }
    }
    logFile.Append(pendingTail);
}

void ScrivelXmlGenBase::EndLogging()
{
    SeekFilePointerPosition();
    FlushOutput(true, "");
    logFile.close();
}

namespace
{

/// Kept out of FileEndTag, which is asked twice a call and seldom makes one.
[[gnu::noinline]] std::string EndTagOf(const std::string& logName, long process)
{
    return "</" + logName + "-" + std::to_string(process) + ">\n";
}

}  // namespace

const std::string& ScrivelXmlGenBase::FileEndTag()
{
    // Made anew when the process or the name is another than at the last call.
    const auto process = getpid();
    if (process != processOfEndTag || logName != nameOfEndTag) {
        processOfEndTag = process;
        nameOfEndTag = logName;
        fileEndTag = EndTagOf(logName, process);
    }
    return fileEndTag;
}

std::string ScrivelXmlGenBase::GetFileEndTag()
{
    return FileEndTag();
}

void ScrivelXmlGenBase::UpdateFilePointerPosition()
{
    if (writeSecure) {
        lastFilePos = logFile.tellp();
    }
}

void ScrivelXmlGenBase::SeekFilePointerPosition()
{
    if (writeSecure) {
        logFile.seekp(lastFilePos);
    }
}

std::streamoff ScrivelXmlGenBase::GetLastFilePointerPosition()
{
    return lastFilePos;
}

std::streamoff ScrivelXmlGenBase::GetCurrentFilePointerPosition()
{
    return logFile.tellp();
}

void ScrivelXmlGenBase::WriteComment(std::string text)
{
    SeekFilePointerPosition();
    WriteTabs(false);  // at the end of the line before: the comment begins with a newline of its own
    logFile.Append(std::string("\n").append(LogWords::commentBegin));
    logFile.Append(text);
    logFile.Append(LogWords::commentEnd);
    logFile.Append("\n\n");
    logFile.flush();
}

}  // namespace Scrivel2
