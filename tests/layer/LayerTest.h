// The fixture of tests that look at what the layer writes into the log "run".

#ifndef SCRIVEL_TESTS_LAYER_LAYERTEST_H
#define SCRIVEL_TESTS_LAYER_LAYERTEST_H

#include "support/GeneratorTest.h"

#include <string>

namespace ScrivelTest
{

class LayerTest : public ScratchTest
{
protected:
    /// A whole log around the text of its calls.
    static std::string RunFile(const std::string& body) { return Header("run") + body + EndTag("run"); }

    /// What the log holds now.
    static std::string InRunFile() { return FileText("run-4242.xml"); }
};

}  // namespace ScrivelTest

#endif
