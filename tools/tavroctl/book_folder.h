#pragma once

#include <string>
#include <vector>

#include "account/account.h"

namespace tavro::tools {

// What log-out does to the download folder, whoever put there what is in it.

/// Why log-out, which removes all files directly in the download folder, would do harm with
/// `folder` as such; empty when it would not.
std::string whyHarmful(const Account& account, const std::string& folder);

/// Names of what log-out removes directly in `folder`: all but hidden files and subfolders. Throws
/// Failure when a folder that is there cannot be read.
std::vector<std::string> removedAtLogOut(const std::string& folder);

/// Names of what log-out would remove in `folder` though it is no book of `account`, neither a
/// mapped file nor a placeholder. Throws Failure.
std::vector<std::string> foreignFiles(const Account& account, const std::string& folder);

/// Whether both paths are the same folder, by whatever name.
bool isSameFolder(const std::string& left, const std::string& right);

}  // namespace tavro::tools
