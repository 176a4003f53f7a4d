// The library's side of the comparison in scrivel/CADILayout.h. Tested by tests/package/other_types.sh.

#include "scrivel/CADILayout.h"

namespace Scrivel2
{

template <>
const volatile char ScrivelXmlGen_was_built_with_another_CADITypes_h_than<CADILayout::hash>::this_file =
    0;

}  // namespace Scrivel2
