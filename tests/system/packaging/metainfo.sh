#!/usr/bin/env bash
# SPDX-License-Identifier: MIT
# metainfo.sh FILE: the description for software centres is valid
# shellcheck source=tests/system/packaging/common.sh
. "$(dirname "${BASH_SOURCE[0]}")/common.sh"
need appstreamcli
appstreamcli validate --no-net --explain "$1"
