#pragma once

namespace velamo::test {

#if defined(__has_feature)
constexpr bool isAddressSanitized = __has_feature(address_sanitizer);
constexpr bool isThreadSanitized = __has_feature(thread_sanitizer);
#elif defined(__SANITIZE_ADDRESS__)
constexpr bool isAddressSanitized = true;
constexpr bool isThreadSanitized = false;
#elif defined(__SANITIZE_THREAD__)
constexpr bool isAddressSanitized = false;
constexpr bool isThreadSanitized = true;
#else
constexpr bool isAddressSanitized = false;
constexpr bool isThreadSanitized = false;
#endif

}  // namespace velamo::test
