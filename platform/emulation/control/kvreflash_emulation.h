/** @file
   Emulated targets for programs in any language: they are served in the process that calls these functions, so that a
   front end is tested without a rack. Results, texts and threads follow the rules of kvreflash.h. */

#ifndef KVREFLASH_EMULATION_H
#define KVREFLASH_EMULATION_H

#include <stdint.h> /* this is C; NOLINT(modernize-deprecated-headers) */

/** @def KVR_EMULATION_CALL
   The calling convention of functions. */
/** @def KVR_EMULATION_API
   Marks a function of the library for the compiler. */
#if defined(_WIN32)
#define KVR_EMULATION_CALL __cdecl
#if defined(KV_PLATFORM_STATIC)
#define KVR_EMULATION_API
#elif defined(KV_PLATFORM_BUILD)
#define KVR_EMULATION_API __declspec(dllexport)
#else
#define KVR_EMULATION_API __declspec(dllimport)
#endif
#else
#define KVR_EMULATION_CALL
#define KVR_EMULATION_API __attribute__((visibility("default")))
#endif

#ifdef __cplusplus
extern "C" {
#endif

/** Serves the emulated target in `folder` from now on, beside those that are served already. 0: it is served, and
   `address` (may be null) receives its first IPv4 address, which takes 16 bytes. 1: it is not, and
   kvr_emulation_last_error() says why. -1: `folder` is null, or `address_size` is below 16. -2: out of memory. */
KVR_EMULATION_API int32_t KVR_EMULATION_CALL kvr_emulation_serve(const char* folder, char* address,
                                                                 uint32_t address_size);

/** Stops serving all targets. Not while a session is open. */
KVR_EMULATION_API int32_t KVR_EMULATION_CALL kvr_emulation_reset(void);

/** Why the last call of this thread has failed; empty if it has not. Lasts until the next call of this thread. */
KVR_EMULATION_API const char* KVR_EMULATION_CALL kvr_emulation_last_error(void);

#ifdef __cplusplus
}
#endif

#endif
