#include "tool/RandomSession.h"

#include "CallLog.h"
#include "LoggedCall.h"

#include <iterator>
#include <memory>
#include <mutex>
#include <random>
#include <sstream>
#include <thread>
#include <vector>

namespace ScrivelTest
{

namespace
{

using namespace Scrivel2;
using Guard = LoggedCall<Scrivel2XmlGenRun>;

class Session
{
public:
    Session(RunLog& itsLog, unsigned int seed) : log(itsLog), seeds(seed) {}

    /// Calls of so many threads at once.
    void Run(std::size_t threads)
    {
        std::vector<std::thread> running;
        for (std::size_t i = 0; i < threads; ++i) {
            running.emplace_back([this, i, seed = unsigned(seeds())] { Thread(*this, i, seed).Run(); });
        }
        for (std::thread& thread : running) {
            thread.join();
        }
        log.EndLogging();
        open.clear();
    }

    std::map<std::uint64_t, Made> made;  // by number

private:
    class Thread
    {
    public:
        Thread(Session& itsSession, std::size_t itsIndex, unsigned int seed)
            : session(itsSession), index(itsIndex), random(seed)
        {
        }

        void Run()
        {
            for (std::size_t calls = 1 + Below(8); calls > 0; --calls) {
                Call(outer == 0 ? nullptr : &outer, 0);
                if (Below(4) == 0) {
                    session.log.Comment(Text());
                }
            }
        }

    private:
        std::size_t Below(std::size_t most) { return std::size_t(random()) % most; }

        std::string Text()
        {
            constexpr std::string_view characters = "abcXYZ019 <>&'\"=/.-_;:]\\\xc3\xa9";
            std::string text = "t";
            for (std::size_t length = Below(30); length > 0; --length) {
                text += characters[Below(characters.size() - 2)];
            }
            return text;
        }

        void Call(const std::uint64_t* parent, int depth)
        {
            static const char* const names[] = {"CADIMemRead", "CADIRegWrite", "CADIExecContinue",
                                                "modeChange", "A"};
            Made call;
            call.name = names[Below(std::size(names))];
            call.thread = index;
            call.parent = parent == nullptr ? Json() : Json(*parent);
            CallHead head;
            std::string text;
            if (Below(5) == 0) {
                head.disassemblerAddress = 0x1000 + Below(0x10000);
                std::ostringstream address;
                address << "0x" << std::hex;
                address.width(16);
                address.fill('0');
                address << head.disassemblerAddress;
                call.address = address.str();
            }
            if (Below(5) == 0) {
                text = Text();
                head.elementName = "disassembler";
                head.elementText = text;
                call.before.push_back({{"name", "disassembler"}, {"value", text}});
            }
            std::unique_ptr<Guard> guard;
            const bool atOnce = Below(4) == 0;
            if (atOnce) {
                guard = std::make_unique<Guard>(session.log, call.name, head,
                                                [&](auto& xml) { Values(xml, call.arguments); });
            } else {
                guard = std::make_unique<Guard>(session.log, call.name, head);
            }
            const std::uint64_t number = guard->Number();
            const bool isLate = !atOnce && Below(3) == 0;
            if (!atOnce && !isLate) {
                guard->Arguments([&](auto& xml) { Values(xml, call.arguments); });
            }
            for (std::size_t callbacks = depth < 3 ? Below(3) : 0; callbacks > 0; --callbacks) {
                Call(&number, depth + 1);
            }
            if (isLate) {
                guard->Arguments([&](auto& xml) { Values(xml, call.arguments); });
            }
            if (depth == 0 && Below(12) == 0) {
                Keep(number, call, std::move(guard));
                outer = number;
                return;
            }
            call.returned = true;
            const std::size_t kind = Below(6);
            if (kind == 0) {
                guard.reset();
            } else {
                guard->Results([&](auto& xml) {
                    Values(xml, call.results);
                    if (kind > 1) {
                        const bool failed = kind == 2;
                        xml.WriteReturnType("return", failed ? eslapi::CADI_STATUS_TargetBusy
                                                             : eslapi::CADI_STATUS_OK);
                        call.status = failed ? "CADI_STATUS_TargetBusy" : "CADI_STATUS_OK";
                        call.results.push_back({{"name", "return"}, {"value", call.status}});
                    }
                });
            }
            Keep(number, call, nullptr);
        }

        void Keep(std::uint64_t number, const Made& call, std::unique_ptr<Guard> guard)
        {
            const std::lock_guard<std::mutex> lock(session.mutex);
            session.made[number] = call;
            if (guard != nullptr) {
                session.open.push_back(std::move(guard));
            }
        }

        template <typename Writers>
        void Values(Writers& xml, Json& list)
        {
            for (std::size_t count = Below(4); count > 0; --count) {
                switch (Below(4)) {
                case 0: {
                    const auto value = std::uint64_t(random());
                    xml.WriteDecimal("count", value);
                    list.push_back({{"name", "count"}, {"value", std::to_string(value)}});
                    break;
                }
                case 1: {
                    const std::string text = Text();
                    xml.WriteString("text", text);
                    list.push_back({{"name", "text"}, {"value", text}});
                    break;
                }
                case 2: {
                    std::vector<unsigned char> bytes(1 + Below(Below(10) == 0 ? 3000 : 20));
                    std::string digits;
                    for (unsigned char& byte : bytes) {
                        byte = static_cast<unsigned char>(random());
                        constexpr char hex[] = "0123456789abcdef";
                        digits += hex[byte / 16];
                        digits += hex[byte % 16];
                    }
                    xml.WriteUint8Array("data", bytes.data(), unsigned(bytes.size()), true);
                    list.push_back({{"name", "data"}, {"value", digits}});
                    break;
                }
                default: {
                    const auto space = std::uint32_t(Below(4));
                    xml.WriteAddr("address", eslapi::CADIAddr_t{space, 0x10});
                    list.push_back({{"name", "address"},
                                    {"children",
                                     {{{"name", "spaceId"}, {"value", std::to_string(space)}},
                                      {{"name", "spaceName"}, {"value", "unknown memSpaceInfo"}},
                                      {{"name", "addr"}, {"value", "0x0000000000000010"}}}}});
                }
                }
            }
        }

        Session& session;
        std::size_t index;
        std::minstd_rand random;
        std::uint64_t outer = 0;  // the call that stays open and that all later ones are made in
    };

    RunLog& log;
    std::minstd_rand seeds;
    std::mutex mutex;
    std::vector<std::unique_ptr<Guard>> open;
};

}  // namespace

RandomSession LogRandomSession(const std::string& folder, unsigned int seed, std::uint64_t fileSize)
{
    std::minstd_rand random(seed);
    LogOptions options;
    options.folder = folder;
    options.fileSize = fileSize;
    RunLog log("s" + std::to_string(seed), options);
    Session session(log, unsigned(random()));
    session.Run(1 + random() % 4);
    return {log.FileName(), session.made};
}

}  // namespace ScrivelTest
