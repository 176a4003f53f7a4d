// The reading library as a witness. Asked for every log that a crash program reads.

#include "crash/SecondWitness.h"

#include "scrivel/LogReader.h"

namespace ScrivelTest
{

std::optional<Testimony> SecondWitness(std::string_view bytes)
{
    class Witness final : public ScrivelReader::LogHandler
    {
    public:
        void Entered(const ScrivelReader::Call& call) override
        {
            if (!call.beginningLost) {
                ++testimony.calls;
                testimony.last = call.number;
            }
        }

        Testimony testimony;
    };
    Witness witness;
    ScrivelReader::LogReader reader(witness);
    reader.Feed(bytes);
    witness.testimony.whole = reader.Finish().whole;
    return witness.testimony;
}

}  // namespace ScrivelTest
