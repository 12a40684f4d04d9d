#pragma once

#include <string>
#include <sys/types.h>
#include <vector>

/// A child process of which all is known that the kernel counts. Its output goes nowhere. Killed with the
/// object.
class Child
{
public:
    /// `arguments` begins with argv[0]; an empty `environment` hands on our own.
    Child(const std::string& program, const std::vector<std::string>& arguments,
          const std::vector<std::string>& environment = {});
    ~Child();
    Child(const Child&) = delete;
    Child& operator=(const Child&) = delete;

    /// 0 if it could not be started.
    pid_t Pid() const { return pid; }
    void Send(int signal) const;
    /// Waits for the end; the exit code, or -1.
    int Wait();
    /// Processor time of the child and its own children in milliseconds, once it has ended.
    double CpuMs() const { return cpuMs; }

private:
    pid_t pid = 0;
    double cpuMs = 0.0;
};
