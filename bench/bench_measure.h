// What the walk-cost benchmark reads of the machine and of itself, and how it
// sums up repeated measurements.
#pragma once

#include <sched.h>
#include <sys/resource.h>
#include <sys/types.h>
#include <unistd.h>

#include <algorithm>
#include <chrono>
#include <fstream>
#include <string>
#include <thread>
#include <vector>

// CPU seconds the whole machine spent busy (steal included: time another
// guest of the host took from this one).
inline double machineBusySeconds()
{
    std::ifstream in("/proc/stat");
    std::string cpu;
    long long user = 0, nice = 0, system = 0, idle = 0, iowait = 0, irq = 0, softirq = 0, steal = 0;
    in >> cpu >> user >> nice >> system >> idle >> iowait >> irq >> softirq >> steal;
    return static_cast<double>(user + nice + system + irq + softirq + steal) /
           static_cast<double>(sysconf(_SC_CLK_TCK));
}

// CPU seconds of this program and of the children it has waited for (the
// agents and the walking clients).
inline double ownCpuSeconds()
{
    auto seconds = [](const rusage &usage) {
        return static_cast<double>(usage.ru_utime.tv_sec + usage.ru_stime.tv_sec) +
               static_cast<double>(usage.ru_utime.tv_usec + usage.ru_stime.tv_usec) / 1e6;
    };
    rusage self{}, children{};
    getrusage(RUSAGE_SELF, &self);
    getrusage(RUSAGE_CHILDREN, &children);
    return seconds(self) + seconds(children);
}

inline double monotonicSeconds()
{
    return std::chrono::duration<double>(std::chrono::steady_clock::now().time_since_epoch()).count();
}

// With two cores or more, the agent gets the first and this program and
// its clients another, so that neither moves the other around.
inline bool pinAgentApart(pid_t agent)
{
    if (std::thread::hardware_concurrency() < 2)
        return false;
    cpu_set_t agentCpu, clientCpu;
    CPU_ZERO(&agentCpu);
    CPU_ZERO(&clientCpu);
    CPU_SET(0, &agentCpu);
    CPU_SET(1, &clientCpu);
    return sched_setaffinity(agent, sizeof agentCpu, &agentCpu) == 0 &&
           sched_setaffinity(0, sizeof clientCpu, &clientCpu) == 0;
}

inline double median(std::vector<double> values)
{
    if (values.empty())
        return 0;
    std::sort(values.begin(), values.end());
    size_t mid = values.size() / 2;
    return values.size() % 2 ? values[mid] : (values[mid - 1] + values[mid]) / 2;
}

// Interquartile range relative to the median: how much repeated
// measurements of one figure disagree.
inline double spread(std::vector<double> values)
{
    if (values.size() < 4)
        return 0;
    std::sort(values.begin(), values.end());
    double q1 = values[values.size() / 4], q3 = values[(values.size() * 3) / 4];
    double m = median(values);
    return m > 0 ? (q3 - q1) / m : 0;
}
