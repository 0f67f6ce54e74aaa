#pragma once

namespace quorbel {

/// Whether an SQLite result code counts as "busy, worth another attempt".
///
/// The masks are wider than SQLite's own busy codes, and meant to be: any code whose low four bits are 5, 6,
/// 7, 10, 11, 13, 14 or 15 passes, so a file that cannot be opened (14) or read (10) is tried again as well.
constexpr bool CountsAsBusy(int code) {
    return (code & 5) == 5 || (code & 6) == 6 || (code & 10) == 10;
}

}  // namespace quorbel
