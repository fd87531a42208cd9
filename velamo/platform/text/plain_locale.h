#pragma once

#include <locale.h>  // newlocale
#ifdef __APPLE__
#include <xlocale.h>
#endif

namespace velamo {

/// The C locale, whatever locale the program uses, or null when there is no memory for it. It belongs to the process
/// and is never freed.
[[nodiscard]] inline locale_t plainLocale() noexcept {
    static const locale_t locale = ::newlocale(LC_ALL_MASK, "C", nullptr);
    return locale;
}

}  // namespace velamo
