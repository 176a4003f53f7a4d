// The classic C locale, for one thread and a while. Tested by tests/layer/LayerTrapsTest.cpp.

#include "scrivel/ClassicLocale.h"

namespace Scrivel2::Layer
{

ClassicLocale::ClassicLocale()
{
    static const locale_t classic = newlocale(LC_ALL_MASK, "C", nullptr);
    before = uselocale(classic);
}

}  // namespace Scrivel2::Layer
