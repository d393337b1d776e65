// What the engine calls itself.
#pragma once

namespace quill {

inline constexpr char EngineName[] = "quill";
inline constexpr char EngineVersion[] = "1.0";
inline constexpr char EngineAuthor[] = "Orvelle";
// Where standard error goes under a GUI, in the current directory.
inline constexpr char ErrorLogName[] = "quill-1.0-error.log";

}  // namespace quill
