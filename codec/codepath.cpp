// SPDX-License-Identifier: MIT
#include "codec/codepath.h"

bool hasCodePath(CodePath path)
{
#if QUILLARY_HAS_AVX2_PATH
    if (path == CodePath::Avx2)
        return __builtin_cpu_supports("avx2");
#endif
    return path == CodePath::Baseline;
}

CodePath bestCodePath()
{
    static const CodePath best = hasCodePath(CodePath::Avx2) ? CodePath::Avx2 : CodePath::Baseline;
    return best;
}
