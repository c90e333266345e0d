#pragma once

#include <sys/types.h>

#include <array>
#include <cstdint>
#include <functional>

/// A pipe between a test and its processes.
class Pipe {
public:
    Pipe();
    ~Pipe();
    Pipe(const Pipe&) = delete;
    Pipe& operator=(const Pipe&) = delete;

    void put(std::uint64_t value) const;
    std::uint64_t get() const;

private:
    std::array<int, 2> ends_{};
};

/// Runs `body` in a process of its own, which ends with 0 unless an exception leaves it.
pid_t inProcess(const std::function<void()>& body);

/// Waits for the process; its status as waitpid gives it.
int exitStatus(pid_t child);

/// Runs `body(number)` in several processes that start at once, and expects each to end well.
void together(int count, const std::function<void(int)>& body);
