// The C locale in which text is escaped.

#ifndef SCRIVEL_LAYER_CLASSICLOCALE_H
#define SCRIVEL_LAYER_CLASSICLOCALE_H

#include <locale.h>

namespace Scrivel2::Layer
{

// What a shared library shows, also when it is built to hide what isn't marked.
class [[gnu::visibility("default")]] ClassicLocale;

/// While one of these lives the thread's C locale is the classic one, in which every byte from 0x80 up
/// is escaped. In an 8-bit locale the log would have bytes that are no UTF-8.
class ClassicLocale
{
public:
    ClassicLocale();
    ~ClassicLocale() { uselocale(before); }
    ClassicLocale(const ClassicLocale&) = delete;
    ClassicLocale& operator=(const ClassicLocale&) = delete;

private:
    locale_t before;
};

}  // namespace Scrivel2::Layer

#endif
