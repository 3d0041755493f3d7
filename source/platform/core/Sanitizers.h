#pragma once

#if defined(__SANITIZE_ADDRESS__) || defined(__SANITIZE_THREAD__)
#define INKORY_SANITIZED 1
#elif defined(__has_feature)
#if __has_feature(address_sanitizer) || __has_feature(thread_sanitizer)
#define INKORY_SANITIZED 1
#endif
#endif
#ifndef INKORY_SANITIZED
#define INKORY_SANITIZED 0
#endif

namespace inkory
{

/// Whether this is a build that checks its use of memory while it runs. It maps terabytes of address space.
constexpr bool isSanitized = INKORY_SANITIZED;

} // namespace inkory
