#pragma once

#include <string>
#include <sys/types.h>
#include <vector>

/// A child process. Its output is discarded, its processor time is counted, and the destructor kills it.
class Child
{
public:
    /// `arguments` begins with argv[0]. If `environment` is empty, the child inherits ours.
    Child(const std::string& program, const std::vector<std::string>& arguments,
          const std::vector<std::string>& environment = {});
    ~Child();
    Child(const Child&) = delete;
    Child& operator=(const Child&) = delete;

    /// Returns 0 if the child could not be started.
    pid_t Pid() const { return pid; }
    void Send(int signal) const;
    /// Waits until the child ends. Returns its exit code, or -1 if it was killed or never started.
    int Wait();
    /// The processor time of the child and its children in milliseconds. 0 before Wait().
    double CpuMs() const { return cpuMs; }

private:
    pid_t pid = 0;
    double cpuMs = 0.0;
};
