// SPDX-License-Identifier: MIT
#pragma once

/// The sum of two 32-bit addresses or sizes. What does not fit wraps around, as in the console's own address arithmetic.
inline int addWrapping(int a, int b)
{
    return int(unsigned(a) + unsigned(b));
}

/// The difference of two 32-bit addresses or sizes, which wraps around in the same way.
inline int subtractWrapping(int a, int b)
{
    return int(unsigned(a) - unsigned(b));
}
