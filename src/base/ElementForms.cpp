#include "base/ElementForms.h"

namespace Scrivel2
{

void ScrivelXmlGenBase::WriteName(const std::string& ident, const char* name, const char* message,
                                  std::int32_t value)
{
    WriteElement(ident, [&] {
        if (name != nullptr) {
            logFile.Append(name);
        } else {
            logFile.Append(message);
            AppendHex(logFile, static_cast<std::uint32_t>(value), 0);
        }
    });
}

}  // namespace Scrivel2
