#!/usr/bin/env bash
# SPDX-License-Identifier: MIT
# desktopentry.sh FILE: the desktop entry is valid, without a warning or a hint
# shellcheck source=tests/system/packaging/common.sh
. "$(dirname "${BASH_SOURCE[0]}")/common.sh"
need desktop-file-validate
expect "Complaints about $1" "" "$(desktop-file-validate "$1" 2>&1 || true)"
