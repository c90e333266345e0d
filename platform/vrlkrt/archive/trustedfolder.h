#pragma once

#include <string>

namespace vrlkrt {

/// Refuses a folder that code is not to be loaded from, since somebody else could put some there. Trusted are the
/// process's user and root alone: the folder and every folder on the way to it, up to the root, must belong to one of
/// them and be closed to writing by others. So must the links on that way be theirs. Two things are let through: a
/// folder on the way that everybody may write to, when it is sticky, as /tmp is; and writing by a group that is the
/// user's own, as systems with an umask of 002 have it. The part of a path that isn't there yet is not judged.
///
/// Throws vrlBaseException that names the folder, the place that breaks the rule, its owner, and what mends it.
/// The Java half keeps to the same rule for the natives that it unpacks.
void requireTrustedFolder(const std::string& folder);

/// Whether a folder and everything below it keep to the rule. No links are let through here, nor sticky folders.
[[nodiscard]] bool isTrustedInside(const std::string& folder);

}  // namespace vrlkrt
