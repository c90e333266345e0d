#include "vrlkrt/archive/trustedfolder.h"

#include "vrlkrt/archive/folderitems.h"

#include "vrlbase/exceptions.h"

#include <pwd.h>
#include <sys/stat.h>
#include <sys/xattr.h>
#include <unistd.h>

#include <algorithm>
#include <deque>
#include <filesystem>
#include <fstream>
#include <optional>
#include <system_error>
#include <vector>

namespace vrlkrt {
namespace {

namespace fs = std::filesystem;

/// "alice (1000)"; the number alone where nobody has it.
std::string describeUser(uid_t user) {
    passwd entry{};
    passwd* found = nullptr;
    std::vector<char> text(16384);
    const std::string number = std::to_string(user);
    return getpwuid_r(user, &entry, text.data(), text.size(), &found) == 0 && found != nullptr
               ? std::string(entry.pw_name) + " (" + number + ")"
               : number;
}

/// The lines of a table such as /etc/passwd, in fields.
std::vector<std::vector<std::string>> readTable(const char* path) {
    std::vector<std::vector<std::string>> lines;
    std::ifstream file(path);
    for (std::string line; std::getline(file, line);) {
        std::vector<std::string> fields(1);
        for (const char c : line) {
            c == ':' ? static_cast<void>(fields.emplace_back()) : fields.back().push_back(c);
        }
        lines.push_back(std::move(fields));
    }
    return lines;
}

/// Whether a group is the private one of the process's user: it has the user's name, and nobody else is in it. Only
/// what stands in the tables of the system itself counts; a group from elsewhere might have members that nobody tells.
bool isPrivateGroup(gid_t group) {
    const std::string user = std::to_string(geteuid());
    const std::string number = std::to_string(group);
    std::string name;
    for (const auto& account : readTable("/etc/passwd")) {
        if (account.size() < 4) {
            continue;
        }
        if (account[2] == user) {
            name = name.empty() ? account[0] : name;
        } else if (account[3] == number) {
            return false;
        }
    }
    const auto groups = readTable("/etc/group");
    return std::any_of(groups.begin(), groups.end(), [&](const auto& line) {
        return line.size() == 4 && line[0] == name && line[2] == number && (line[3].empty() || line[3] == name);
    });
}

/// An access list may let in more than the owner and the group; the bits of the group then stand for all of them.
bool hasAccessList(const std::string& path) {
    return lgetxattr(path.c_str(), "system.posix_acl_access", nullptr, 0) > 0;
}

/// What breaks the rule at one place, worded to follow its path; "" when nothing does.
std::string problemOf(const std::string& path, const struct stat& state, bool mayBeSticky) {
    const std::string owner = "belongs to the user " + describeUser(state.st_uid);
    if (state.st_uid != geteuid() && state.st_uid != 0) {
        return (S_ISLNK(state.st_mode) ? "is a link that " : "") + owner + ", while this process runs as " +
               describeUser(geteuid());
    }
    if (S_ISLNK(state.st_mode) || (mayBeSticky && (state.st_mode & S_ISVTX) != 0)) {
        return "";
    }
    if ((state.st_mode & S_IWOTH) != 0) {
        return owner + " and can be written by everybody; 'chmod o-w' mends that";
    }
    if ((state.st_mode & S_IWGRP) != 0 && (hasAccessList(path) || !isPrivateGroup(state.st_gid))) {
        return owner + " and can be written by others of its group " + std::to_string(state.st_gid) +
               "; 'chmod g-w' mends that";
    }
    return "";
}

/// Goes from the root to a folder as the system would, one name after the other.
class Walk {
public:
    explicit Walk(const std::string& folder) : folder_(folder) { follow(fs::absolute(folder)); }

    void run() {
        while (!names_.empty()) {
            const std::string name = names_.front();
            names_.pop_front();
            if (name == "..") {
                place_ = place_.parent_path();
            } else if (name != "." && !name.empty() && !enter(place_ / name)) {
                return;
            }
        }
    }

private:
    /// Puts the names of a path before those that are still to come.
    void follow(const fs::path& path) {
        std::vector<std::string> names;
        for (const fs::path& name : path.relative_path()) {
            names.push_back(name.string());
        }
        names_.insert(names_.begin(), names.begin(), names.end());
        if (path.is_absolute()) {
            place_ = path.root_path();
            judge(place_.string());
        }
    }

    /// False where there is nothing more to go through.
    bool enter(const fs::path& next) {
        constexpr int mostLinks = 40;
        const std::optional<struct stat> state = judge(next.string());
        if (!state) {
            return false;
        }
        if (!S_ISLNK(state->st_mode)) {
            place_ = next;
            return true;
        }
        std::error_code error;
        const fs::path target = fs::read_symlink(next, error);
        if (error || ++links_ > mostLinks) {
            return false;
        }
        follow(target);
        return true;
    }

    /// Nothing where there is nothing to be seen; who goes on to use the path is told why.
    std::optional<struct stat> judge(const std::string& path) const {
        struct stat state {};
        if (lstat(path.c_str(), &state) != 0) {
            return std::nullopt;
        }
        if (!S_ISDIR(state.st_mode) && !S_ISLNK(state.st_mode)) {
            return state;
        }
        const std::string problem = problemOf(path, state, !names_.empty());
        if (!problem.empty()) {
            throw Norvane::vrl::vrlBaseException("Code isn't loaded from " + folder_ +
                                                 ", since others could put some there: " + path + " " + problem + ".");
        }
        return state;
    }

    const std::string folder_;
    fs::path place_;
    std::deque<std::string> names_;
    int links_ = 0;
};

bool isTrustedItem(const std::string& path) {
    struct stat state {};
    return lstat(path.c_str(), &state) == 0 && !S_ISLNK(state.st_mode) && problemOf(path, state, false).empty();
}

bool areItemsTrusted(const std::string& folder) {
    FolderItems items(folder);
    while (items.next()) {
        const std::string path = folder + "/" + items.name();
        if (!isTrustedItem(path) || (S_ISDIR(items.mode()) && !areItemsTrusted(path))) {
            return false;
        }
    }
    return items.error() == 0;
}

}  // namespace

void requireTrustedFolder(const std::string& folder) { Walk(folder).run(); }

bool isTrustedInside(const std::string& folder) { return isTrustedItem(folder) && areItemsTrusted(folder); }

}  // namespace vrlkrt
