#include "vrlbase/runtime.h"

#include "options.h"
#include "vrlbase/library.h"
#include "vrlbase/operation.h"
#include "vrlbase/vrlbase.h"

#include <dlfcn.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <filesystem>
#include <map>
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

/// What a library has of the runtime.
struct Client {
    bool started = false;
    boost::shared_ptr<jzi::JavaVMConfig> javaVMConfig;
};

/// The state of the runtime, which runs while a client has it started. While it doesn't run the options are the
/// defaults and there is no log. The log has a lock of its own, taken last: it is written while others are held.
struct Runtime {
    std::mutex mutex;
    std::map<vrlLibrary, Client> clients;
    vrlStartAndStop hooks;
    vrlbase::Options options;
    std::set<std::string> logFileNames;  ///< every one so far: callers hold pointers into them
    const char* logFileName = "";

    std::mutex logMutex;
    LogFile log;
};

/// Never ended: a configuration holds references of a virtual machine that may be gone when static objects go.
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

bool runs(const Runtime& state) {
    return std::any_of(state.clients.begin(), state.clients.end(),
                       [](const auto& client) { return client.second.started; });
}

/// A library starts the runtime: takes the options over, with the open log that they name, as one step. The old ones go
/// after the locks.
void adopt(Runtime& state, vrlLibrary library, vrlbase::Options options, LogFile log) {
    const std::lock_guard<std::mutex> lock(state.mutex);
    Client& client = state.clients[library];
    state.logFileName = options.logFile.empty() ? "" : state.logFileNames.insert(options.logFile).first->c_str();
    client.started = true;
    std::swap(state.options, options);
    const std::lock_guard<std::mutex> logLock(state.logMutex);
    state.log.swap(log);
}

/// Ends a library's start, which it has. With the last one the options and the log go, after the locks.
void endStart(Runtime& state, vrlLibrary library) {
    vrlbase::Options options;
    LogFile log;
    const std::lock_guard<std::mutex> lock(state.mutex);
    state.clients[library].started = false;
    if (!runs(state)) {
        state.logFileName = "";
        std::swap(state.options, options);
        const std::lock_guard<std::mutex> logLock(state.logMutex);
        state.log.swap(log);
    }
}

/// Counts a library among those that started the runtime. False where it was, or nobody had.
bool joins(Runtime& state, vrlLibrary library) {
    const std::lock_guard<std::mutex> lock(state.mutex);
    return runs(state) && !std::exchange(state.clients[library].started, true);
}

bool hasStarted(Runtime& state, vrlLibrary library) {
    const std::lock_guard<std::mutex> lock(state.mutex);
    const auto client = state.clients.find(library);
    return client != state.clients.end() && client->second.started;
}

vrlStartAndStop hooksOf(Runtime& state) {
    const std::lock_guard<std::mutex> lock(state.mutex);
    return state.hooks;
}

void start(vrlLibrary library, const char** options, unsigned count) {
    Runtime& state = runtime();
    if (count > 0 || !joins(state, library)) {
        vrlbase::Options parsed = vrlbase::parseOptions(options, count);
        LogFile log = openLog(parsed.logFile);
        adopt(state, library, std::move(parsed), std::move(log));
    }
    if (const auto started = hooksOf(state).started) {
        started(library);
    }
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

}  // namespace

vrlLibrary vrlLibraryAt(const void* code) noexcept {
    Dl_info library{};
    return dladdr(code, &library) == 0 ? nullptr : library.dli_fbase;
}

void vrlInitializeApplicationImpl(const char** options, unsigned count) {
    const vrlLibrary caller = vrlLibraryAt(__builtin_return_address(0));
    vrlbase::operation([&] { start(caller, options, count); });
}

void vrlStartFor(vrlLibrary library) {
    Runtime& state = runtime();
    const std::lock_guard<std::mutex> lock(state.mutex);
    state.clients[library].started = true;
}

void vrlTerminateApplicationImpl() {
    const vrlLibrary caller = vrlLibraryAt(__builtin_return_address(0));
    vrlbase::operation([&] { vrlStopFor(caller); });
}

void vrlStopFor(vrlLibrary library) {
    Runtime& state = runtime();
    if (!hasStarted(state, library)) {
        return;
    }
    if (const auto stopping = hooksOf(state).stopping) {
        stopping(library);
    }
    endStart(state, library);
}

void vrlForgetInBase(vrlLibrary library) {
    vrlStopFor(library);
    // Ended after the lock, with the configuration in it.
    std::map<vrlLibrary, Client>::node_type forgotten;
    Runtime& state = runtime();
    const std::lock_guard<std::mutex> lock(state.mutex);
    forgotten = state.clients.extract(library);
}

void vrlSetStartAndStop(const vrlStartAndStop& hooks) {
    Runtime& state = runtime();
    const std::lock_guard<std::mutex> lock(state.mutex);
    state.hooks = hooks;
}

bool vrlIsKRTInitialized() {
    Runtime& state = runtime();
    const std::lock_guard<std::mutex> lock(state.mutex);
    return runs(state);
}

bool vrlIsKcc() { return false; }

bool vrlIsJVMEnabled() { return !readOption(&vrlbase::Options::noJvm); }

bool vrlIsNoDisplaySet() { return readOption(&vrlbase::Options::noDisplay); }

const char* vrlGetLogFileName() { return read(&Runtime::logFileName); }

bool vrlSetZvmState(int state, boost::shared_ptr<jzi::JavaVMConfig> config) {
    constexpr int insideRunningMachine = 4;
    if (state != insideRunningMachine || !config) {
        return false;
    }
    const vrlLibrary caller = vrlLibraryAt(__builtin_return_address(0));
    Runtime& current = runtime();
    const std::lock_guard<std::mutex> lock(current.mutex);
    current.clients[caller].javaVMConfig.swap(config);
    return true;
}

boost::shared_ptr<jzi::JavaVMConfig> vrlGetJavaVMConfig() {
    return vrlConfigOf(vrlLibraryAt(__builtin_return_address(0)));
}

boost::shared_ptr<jzi::JavaVMConfig> vrlConfigOf(vrlLibrary library) {
    Runtime& state = runtime();
    const std::lock_guard<std::mutex> lock(state.mutex);
    const auto client = state.clients.find(library);
    return client == state.clients.end() ? nullptr : client->second.javaVMConfig;
}

boost::shared_ptr<jzi::JavaVMConfig> vrlAnyConfig() {
    Runtime& state = runtime();
    const std::lock_guard<std::mutex> lock(state.mutex);
    const auto client = std::find_if(state.clients.begin(), state.clients.end(),
                                     [](const auto& entry) { return entry.second.javaVMConfig != nullptr; });
    return client == state.clients.end() ? nullptr : client->second.javaVMConfig;
}

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
