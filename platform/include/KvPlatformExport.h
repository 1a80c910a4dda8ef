#pragma once

/// Export and import attribute of everything that the platform library offers. `KV_PLATFORM_BUILD` is defined
/// while the platform library itself is compiled, `KV_PLATFORM_STATIC` where its operations are linked rather than
/// imported.
#if defined(_WIN32)
#if defined(KV_PLATFORM_STATIC)
#define KV_PLATFORM_API
#elif defined(KV_PLATFORM_BUILD)
#define KV_PLATFORM_API __declspec(dllexport)
#else
#define KV_PLATFORM_API __declspec(dllimport)
#endif
#else
#define KV_PLATFORM_API __attribute__((visibility("default")))
#endif
