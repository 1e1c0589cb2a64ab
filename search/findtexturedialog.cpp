// SPDX-License-Identifier: MIT
#include "search/findtexturedialog.h"
