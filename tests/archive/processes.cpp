#include "processes.h"

#include <gtest/gtest.h>

#include <sys/wait.h>
#include <unistd.h>

#include <string>
#include <vector>

Pipe::Pipe() { EXPECT_EQ(pipe(ends_.data()), 0); }

Pipe::~Pipe() {
    close(ends_[0]);
    close(ends_[1]);
}

void Pipe::put(std::uint64_t value) const { EXPECT_EQ(write(ends_[1], &value, sizeof value), ssize_t{sizeof value}); }

std::uint64_t Pipe::get() const {
    std::uint64_t value = 0;
    EXPECT_EQ(read(ends_[0], &value, sizeof value), ssize_t{sizeof value});
    return value;
}

pid_t inProcess(const std::function<void()>& body) {
    const pid_t child = fork();
    if (child == 0) {
        try {
            body();
            _exit(0);
        } catch (const std::exception& error) {
            const std::string text = std::string(error.what()) + "\n";
            static_cast<void>(!write(STDERR_FILENO, text.data(), text.size()));
            _exit(1);
        }
    }
    return child;
}

int exitStatus(pid_t child) {
    int status = 0;
    EXPECT_EQ(waitpid(child, &status, 0), child);
    return status;
}

void together(int count, const std::function<void(int)>& body) {
    const Pipe start;
    std::vector<pid_t> children;
    for (int i = 0; i < count; ++i) {
        children.push_back(inProcess([&, i] {
            start.get();
            body(i);
        }));
    }
    for (int i = 0; i < count; ++i) {
        start.put(1);
    }
    for (const pid_t child : children) {
        EXPECT_EQ(exitStatus(child), 0);
    }
}
