// Where the stand-in is kinder than the real library. Built as its variant (see
// CMakeLists.txt) it has that library's ways instead: "not implemented" is an
// answer of no bytes, nesting has no bound, fl_method_call_respond() frees the
// error that it hands out, and what that library crashes on is fatal. So tests
// that rely on the kindness show themselves without a Flutter SDK.
#ifndef CORVANE_EMBEDDING_AS_REAL_H_
#define CORVANE_EMBEDDING_AS_REAL_H_

namespace embedding {

#ifdef CORVANE_EMBEDDING_AS_REAL
constexpr bool kAsReal = true;
#else
constexpr bool kAsReal = false;
#endif

}  // namespace embedding

#endif  // CORVANE_EMBEDDING_AS_REAL_H_
