#ifndef TVDBWRITEFILE_H
#define TVDBWRITEFILE_H

// tv_db_write_file: the one way the database puts bytes on the disk.
//
// Writes text to name in one call (replacing the file, or appended to it,
// through one descriptor),
// then, with sync, flushes it to the disk: TVErrC_ok means the bytes are
// there. Without sync they are as safe as the next flush of the file (a
// record that can be rebuilt from what was flushed). The
// directory is made first. Failures, each naming the file:
//   the warning TVErrC_FileCreate "Could not create the file %s" (open),
//   the error TVErrC_FileWrite "Failed write of %s" (write),
//   tv_sync_file's own errors (flush).
// A failed append is cut back to the length the file had before, so a half
// block never stays behind in an append-only log. A failed replacing write
// leaves a partial file at name: callers write to a scratch name.
//
// The write asks TVFileFaults (E_OpWrite on name) first, so tests can fail it.

#include <string>

[[nodiscard]] int tv_db_write_file(const std::string& name, const std::string& text, bool append,
                                   bool sync = true);

// Replaces name by text whole, for files the user keeps (an export, the
// paste buffer): the bytes go to a fresh hidden name beside name and are
// flushed, that is renamed over name, and the folder is flushed. At every
// moment name holds its old bytes or all of the new ones; a failure leaves
// it as it was and no temporary file behind. Failures name the file: those
// of tv_db_write_file, and tv_rename_file's. The fault seam sees the write
// (E_OpWrite on name) and the rename.
[[nodiscard]] int tv_db_save_file(const std::string& name, const std::string& text);

// The whole file into text. TVFileFaults' E_OpRead on name, or a file that
// won't open: the warning TVErrC_FileOpen "Could not open the file %s".
[[nodiscard]] int tv_db_read_file(const std::string& name, std::string& text);

#endif // TVDBWRITEFILE_H
