#pragma once

#include <locale.h>  // newlocale
#ifdef __APPLE__
#include <xlocale.h>
#endif

namespace velamo {

/// The C locale, whatever the program is in; null where there is no memory for it. It is the process's own.
[[nodiscard]] inline locale_t plainLocale() noexcept {
    static const locale_t locale = ::newlocale(LC_ALL_MASK, "C", nullptr);
    return locale;
}

}  // namespace velamo
