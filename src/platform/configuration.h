#pragma once

#include <lectern.h>

#include <memory>
#include <string>

namespace platform {

/// Frees a configuration handle without saving.
struct ConfigurationDiscarder {
    void operator()(LecternConfig* config) const { CloseConfigNoSave(config); }
};

/// Owns an open key/value file of the platform, or none when it could not be opened; the
/// platform's calls accept both. Goes without saving; `save` writes it.
using Configuration = std::unique_ptr<LecternConfig, ConfigurationDiscarder>;

/// Opens the key/value file `path`.
inline Configuration openConfiguration(const std::string& path) {
    return Configuration(OpenConfig(path.c_str(), nullptr));
}

/// Saves and closes `config`. @return 0, or -1 when there is none or saving failed.
inline int save(Configuration config) {
    return CloseConfig(config.release());
}

}  // namespace platform
