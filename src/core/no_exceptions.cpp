// SPDX-License-Identifier: Apache-2.0
// What the C++ library calls to throw, in the programs as they are shipped: nothing of the agent catches, so
// each ends the process, as an exception that nobody catches does. The library's own would bring the
// unwinder, which weighs more than some rooms do. Names and signatures are those of the Itanium C++ ABI,
// level II.
#include <cstdlib>

extern "C" {
[[noreturn]] void *__cxa_allocate_exception(size_t) noexcept {
    abort();
}
void __cxa_free_exception(void *) noexcept {
    abort();
}
[[noreturn]] void __cxa_throw(void *, void *, void (*)(void *)) {
    abort();
}
[[noreturn]] void __cxa_rethrow() {
    abort();
}
[[noreturn]] void *__cxa_begin_catch(void *) noexcept {
    abort();
}
void __cxa_end_catch() {
    abort();
}
[[noreturn]] void __cxa_call_terminate(void *) noexcept {
    abort();
}
[[noreturn]] void _Unwind_Resume(void *) {
    abort();
}
[[noreturn]] int __gxx_personality_v0() {
    abort();
}
}
