#pragma once

/// Names of the files that the tools and applications keep in the configuration folder for
/// themselves; those that the library knows are in platform/account_files.h.
namespace tavro::tools::own_files {

inline constexpr const char* sync_log = ".tavro_sync.log";        ///< what rounds have done
inline constexpr const char* round_record = ".tavro_sync_round";  ///< see account/round_record.h
inline constexpr const char* account_lock = ".tavro_sync_lock";   ///< held while one is at work
inline constexpr const char* book_map_copy = ".tavro.lst_saved";  ///< see account/book_map_copy.h
inline constexpr const char* journal_copy = ".tavro_journal_replaying";  ///< during a replay

}  // namespace tavro::tools::own_files
