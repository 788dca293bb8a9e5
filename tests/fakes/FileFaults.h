#pragma once

/// Stands between SQLite and its files, in the whole process: at a chosen call it kills the process or fails.
///
/// Threads: one. What is open when it is planned goes through it as well.
namespace skyflare::fileFaults {

enum class Kind {
    None,
    KillAtChange,   ///< dies in the middle of a change to a file, half of it written
    FailOnce,       ///< that call fails, those after it do not: a disk that was full, or does not answer
    FailFromThenOn, ///< that call and all that follow
    ReadOnly,       ///< no file opens for writing
};

/// @param at  which call, from 1 on: changes alone are counted for KillAtChange; else opening, reading,
/// syncing too
void plan(Kind kind, long at = 0);
/// How many calls, of those that the plan counts, there have been since it was made.
long calls();

} // namespace skyflare::fileFaults
