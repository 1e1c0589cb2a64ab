// SPDX-License-Identifier: MIT
#pragma once

/// The instruction sets for which the texel loops are compiled. All give the same bytes.
enum class CodePath {
    Baseline, ///< What every machine of the architecture has.
    Avx2, ///< x86-64 with AVX2: vectors twice as wide. Only where hasCodePath() says so.
};

/// Whether this machine, and the compiler that built the program, offer \a path.
bool hasCodePath(CodePath path);

/// The fastest path of this machine; determined once.
CodePath bestCodePath();

// The compiler vectorizes the same loops a second time for AVX2. A function that is inlined into one with this attribute is
// compiled for AVX2 as well, so the loops themselves are always inlined.
#if defined(__x86_64__) && (defined(__GNUC__) || defined(__clang__))
#define QUILLARY_HAS_AVX2_PATH 1
#define QUILLARY_AVX2 __attribute__((target("avx2")))
#else
#define QUILLARY_HAS_AVX2_PATH 0
#define QUILLARY_AVX2
#endif
