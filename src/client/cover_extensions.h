#pragma once

/// What the names of cover files end with; of several covers of a book the first kind is shown.
namespace cover_extension {

inline constexpr char jpeg[] = ".jpeg";
inline constexpr char png[] = ".png";
inline constexpr char bmp[] = ".bmp";

}  // namespace cover_extension
