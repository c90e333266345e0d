#include "vrlbase/runtime.h"

#include "options.h"
#include "vrlbase/operation.h"
#include "vrlbase/vrlbase.h"

#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <filesystem>
#include <memory>
#include <mutex>
#include <set>
#include <string>
#include <system_error>
#include <utility>

namespace {

using Norvane::vrl::vrlBaseException;

struct CloseFile {
    void operator()(std::FILE* file) const noexcept { std::fclose(file); }
};
using LogFile = std::unique_ptr<std::FILE, CloseFile>;

/// The state of the runtime. While it doesn't run the options are the defaults and there is no log. The log has a lock
/// of its own, taken last: it is written while others are held.
struct Runtime {
    std::mutex mutex;
    bool running = false;
    vrlbase::Options options;
    std::set<std::string> logFileNames;  ///< every one so far: callers hold pointers into them
    const char* logFileName = "";
    std::vector<void (*)()> terminationHooks;
    boost::shared_ptr<jzi::JavaVMConfig> javaVMConfig;

    std::mutex logMutex;
    LogFile log;
};

/// Never ended: the configuration holds references of a virtual machine that may be gone when static objects go.
Runtime& runtime() {
    static Runtime& instance = *new Runtime;
    return instance;
}

LogFile openLog(const std::string& name) {
    if (name.empty()) {
        return nullptr;
    }
    LogFile log(std::fopen(vrlFileSystemPath(name).c_str(), "ae"));
    if (log == nullptr) {
        throw vrlBaseException("option -logfile: " + name + " can't be written: " + std::strerror(errno));
    }
    return log;
}

/// Takes the options over, with the open log that they name, as one step. The old ones go after the locks.
void adopt(Runtime& state, vrlbase::Options options, LogFile log, bool running) {
    const std::lock_guard<std::mutex> lock(state.mutex);
    state.logFileName = options.logFile.empty() ? "" : state.logFileNames.insert(options.logFile).first->c_str();
    std::swap(state.options, options);
    state.running = running;
    const std::lock_guard<std::mutex> logLock(state.logMutex);
    state.log.swap(log);
}

template <typename T>
T read(T Runtime::*member) {
    Runtime& state = runtime();
    const std::lock_guard<std::mutex> lock(state.mutex);
    return state.*member;
}

template <typename T>
T readOption(T vrlbase::Options::*member) {
    Runtime& state = runtime();
    const std::lock_guard<std::mutex> lock(state.mutex);
    return state.options.*member;
}

/// One of the hooks, which run without the lock; null behind the last.
void (*terminationHook(std::size_t index))() {
    Runtime& state = runtime();
    const std::lock_guard<std::mutex> lock(state.mutex);
    return index < state.terminationHooks.size() ? state.terminationHooks[index] : nullptr;
}

}  // namespace

void vrlInitializeApplicationImpl(const char** options, unsigned count) {
    vrlbase::operation([&] {
        vrlbase::Options parsed = vrlbase::parseOptions(options, count);
        LogFile log = openLog(parsed.logFile);
        adopt(runtime(), std::move(parsed), std::move(log), true);
    });
}

void vrlStartIfStopped() {
    Runtime& state = runtime();
    const std::lock_guard<std::mutex> lock(state.mutex);
    state.running = true;
}

void vrlTerminateApplicationImpl() {
    vrlbase::operation([] {
        if (!vrlIsKRTInitialized()) {
            return;
        }
        std::size_t next = 0;
        while (void (*hook)() = terminationHook(next++)) {
            hook();
        }
        adopt(runtime(), {}, nullptr, false);
    });
}

void vrlOnTermination(void (*hook)()) {
    Runtime& state = runtime();
    const std::lock_guard<std::mutex> lock(state.mutex);
    auto& hooks = state.terminationHooks;
    if (std::find(hooks.begin(), hooks.end(), hook) == hooks.end()) {
        hooks.push_back(hook);
    }
}

bool vrlIsKRTInitialized() { return read(&Runtime::running); }

bool vrlIsKcc() { return false; }

bool vrlIsJVMEnabled() { return !readOption(&vrlbase::Options::noJvm); }

bool vrlIsNoDisplaySet() { return readOption(&vrlbase::Options::noDisplay); }

const char* vrlGetLogFileName() { return read(&Runtime::logFileName); }

bool vrlSetZvmState(int state, boost::shared_ptr<jzi::JavaVMConfig> config) {
    constexpr int insideRunningMachine = 4;
    if (state != insideRunningMachine || !config) {
        return false;
    }
    Runtime& current = runtime();
    const std::lock_guard<std::mutex> lock(current.mutex);
    current.javaVMConfig.swap(config);
    return true;
}

boost::shared_ptr<jzi::JavaVMConfig> vrlGetJavaVMConfig() { return read(&Runtime::javaVMConfig); }

void vrlWriteLog(const char* text) {
    if (text != nullptr) {
        vrlWriteLog({text});
    }
}

void vrlWriteLog(std::initializer_list<const char*> pieces) {
    Runtime& state = runtime();
    const std::lock_guard<std::mutex> lock(state.logMutex);
    if (state.log != nullptr) {
        for (const char* piece : pieces) {
            std::fputs(piece, state.log.get());
        }
        std::fflush(state.log.get());
    }
}

std::vector<std::string> vrlGetCacheDirectories() {
    const std::string chosen = readOption(&vrlbase::Options::cacheDirectory);
    if (!chosen.empty()) {
        return {vrlFileSystemPath(chosen)};
    }
    std::vector<std::string> folders;
    std::error_code missing;
    const char* cache = std::getenv("XDG_CACHE_HOME");
    const char* home = std::getenv("HOME");
    if (cache != nullptr && *cache == '/') {
        folders.push_back(std::string(cache) + "/loomkit/components");
    } else if (home != nullptr && *home == '/' && std::filesystem::is_directory(home, missing)) {
        // The user of a service often has a home that is not there.
        folders.push_back(std::string(home) + "/.cache/loomkit/components");
    }
    std::filesystem::path temporary = std::filesystem::temp_directory_path(missing);
    if (missing) {
        temporary = "/tmp";
    }
    folders.push_back((temporary / ("loomkit-" + std::to_string(geteuid())) / "components").string());
    return folders;
}
