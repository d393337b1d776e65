"""What the host of a virtual machine keeps from it: measurements that it disturbs are not the
engine's."""

import os
import pathlib


def stolen_time():
    """Seconds of processor time that the host has kept from this machine, summed over processors.

    Linux only, elsewhere 0.
    """
    statistics = pathlib.Path("/proc/stat")
    if not statistics.exists():
        return 0.0
    return int(statistics.read_text().split()[8]) / os.sysconf("SC_CLK_TCK")
