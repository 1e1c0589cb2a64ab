// SPDX-License-Identifier: MIT
#pragma once

#include <linux/capability.h>
#include <sys/syscall.h>
#include <unistd.h>

/// While it exists, permissions bind this thread also when it runs as root: it has no capabilities in effect.
class WithoutPrivileges
{
public:
    WithoutPrivileges()
    {
        syscall(SYS_capget, &m_header, m_before);
        __user_cap_data_struct none[2] = {m_before[0], m_before[1]};
        none[0].effective = none[1].effective = 0;
        syscall(SYS_capset, &m_header, none);
    }
    ~WithoutPrivileges() { syscall(SYS_capset, &m_header, m_before); }
    WithoutPrivileges(const WithoutPrivileges &) = delete;
    WithoutPrivileges &operator=(const WithoutPrivileges &) = delete;

private:
    __user_cap_header_struct m_header = {_LINUX_CAPABILITY_VERSION_3, 0};
    __user_cap_data_struct m_before[2] = {};
};
