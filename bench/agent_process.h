// What the benchmarks read of the agent process from /proc.
#pragma once

#include <sys/types.h>

#include <filesystem>
#include <fstream>
#include <string>

// Resident memory in KiB, or -1.
inline long residentKiB(pid_t pid)
{
    std::ifstream status("/proc/" + std::to_string(pid) + "/status");
    std::string line;
    while (std::getline(status, line))
        if (line.rfind("VmRSS:", 0) == 0)
            return std::stol(line.substr(6));
    return -1;
}

// Time all the process's threads have spent on a CPU, in nanoseconds.
inline long long cpuNanoseconds(pid_t pid)
{
    long long total = 0;
    for (const auto &task : std::filesystem::directory_iterator("/proc/" + std::to_string(pid) + "/task")) {
        std::ifstream schedstat(task.path() / "schedstat");
        long long onCpu = 0;
        if (schedstat >> onCpu)
            total += onCpu;
    }
    return total;
}
