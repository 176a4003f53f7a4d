// A random session through the layer, and what was logged in it. It stands apart from the tests that read
// its log, which see nothing of the layer.

#ifndef SCRIVEL_TESTS_TOOL_RANDOMSESSION_H
#define SCRIVEL_TESTS_TOOL_RANDOMSESSION_H

#include <cstddef>
#include <cstdint>
#include <map>
#include <string>

#include <nlohmann/json.hpp>

namespace ScrivelTest
{

using Json = nlohmann::ordered_json;

/// A call that was logged; its values as scrivel should show them.
struct Made
{
    std::string name;
    std::size_t thread = 0;
    Json parent;
    Json status;
    bool returned = false;
    Json before = Json::array();
    std::string address;
    Json arguments = Json::array();
    Json results = Json::array();
};

struct RandomSession
{
    std::string fileName;  ///< of its first file
    std::map<std::uint64_t, Made> calls;
};

/// Logs calls of up to four threads into a folder: callbacks, late arguments, failed and open calls,
/// comments, heads. A size of files other than 0 makes several files.
RandomSession LogRandomSession(const std::string& folder, unsigned int seed, std::uint64_t fileSize);

}  // namespace ScrivelTest

#endif
