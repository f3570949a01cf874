#ifndef TVFILEUTILS_H
#define TVFILEUTILS_H

// Free functions on path names. Paths are 8-bit byte strings, handed to the
// system as they are.
//
// The fallible ones report through the error framework and name the path in
// every message, so the log says which file it was. By default an error
// throws a TVErrDetails and a warning returns its value; with the action set
// to continue, an error returns its value too. Nothing is retried.
//
// "A file exists" means throughout: it can be opened for reading and is not
// a directory. A folder is not a file.
//
// Save, load, backup and sync all rely on the order of the checks in
// tv_rename_file and tv_copy_file, written out below, and on their atomic
// replace; change them only with those. Every operation that changes the
// disk passes TVFileFaults (see tvfilefaults.h), so tests can make it fail.

#include <string>
#include <vector>

#include "LibDate/core/tvdate.h"

// ---- Probes (never raise) -------------------------------------------------

bool tv_file_exists(const std::string& name);
// True for a directory, or a link to one.
bool tv_dir_exists(const std::string& name);
// Whether a file can be made there: "ABCDEFFFED-test.txt" is created in the
// directory and deleted again. False for a missing directory.
bool tv_dir_writable(const std::string& name);
// The modification time to the microsecond, in the default zone; the
// invalid date when there is nothing at name. Directories have one too.
TVDate tv_file_modified(const std::string& name);
// What tells one version of a file from the next, as text: its device and
// inode (a file replaced whole by a rename is a new inode), size and
// modification time to the nanosecond. Two writes within one tick of the
// file system's clock share a time, so the time alone can miss the second.
// Empty when the file is missing.
std::string tv_file_version(const std::string& name);

// True if both hold the same bytes. A file that can't be opened is the error
// TVErrC_FileOpen "tv_file_compare: Could not open %s for reading." (false
// if the error doesn't throw).
bool tv_file_compare(const std::string& a, const std::string& b);

// ---- Changing the disk ----------------------------------------------------

// Makes the directory with its parents. If something is already at name:
// TVErrC_ok with existsOk, else the warning TVErrC_FileExists
// "%s already exists". A failure, including a regular file in the way with
// existsOk, is the error TVErrC_FileCreate "Could not create %s".
[[nodiscard]] int tv_create_dir(const std::string& name, bool existsOk);

// Unlinks the file. A file that isn't there is TVErrC_ok, or with mustExist
// the error TVErrC_FileNotExist "The file %s does not exist.". Errors
// TVErrC_FileDelete: "Could not delete %s (error %d - %s)" when the system
// refuses, "Could not delete %s" when the file can still be opened after.
[[nodiscard]] int tv_delete_file(const std::string& name, bool mustExist);

// Moves a file, checking in this order:
//  1. from missing: error TVErrC_FileNotExist "The file %s does not exist.".
//  2. directory of to missing: made with createDir (tv_create_dir), else the
//     warning TVErrC_FileNotExist "The directory %s does not exist.".
//  3. a file at to: without overwrite, the error TVErrC_FileExists
//     "The file %s already exists."; if to is from itself (the same file by
//     another name), the error of step 4.
//  4. rename(2), which replaces to in one step: at every moment to holds
//     the old file or the new one, never neither. Across file systems the
//     bytes go to a temporary name beside to first, are flushed, and that
//     is renamed over to. Failure is the error TVErrC_FileRename
//     "Could not rename %s to %s".
//  5. On the disk afterwards: to can't be opened, the error TVErrC_FileCreate
//     "Could not create %s"; from still can, TVErrC_FileDelete
//     "Could not delete %s".
// Every failure leaves to as it was (and from too, before step 5).
[[nodiscard]] int tv_rename_file(const std::string& from, const std::string& to, bool createDir,
                                 bool overwrite);

// Copies a file with the same checks as tv_rename_file; step 4 writes the
// bytes (and the mode) to a temporary name beside to, flushes them, and
// renames that over to; its failure is the error TVErrC_FileRename
// "Could not copy %s to %s" and leaves no temporary file. Step 5 checks
// only that to can be opened. The copy's bytes are on the disk when it
// returns; its name is, once the caller flushes the folder.
[[nodiscard]] int tv_copy_file(const std::string& from, const std::string& to, bool createDir,
                               bool overwrite);

// Flush a file's contents, or a directory's list of names (after a rename
// or a create), to the disk. A missing path is the error TVErrC_FileNotExist
// "The file %s does not exist." / "The directory %s does not exist."; one
// that won't open, TVErrC_FileOpen "Could not open %s (error %d - %s)"; a
// failed flush, TVErrC_FileWrite "Could not sync %s (error %d - %s)".
[[nodiscard]] int tv_sync_file(const std::string& name);
[[nodiscard]] int tv_sync_dir(const std::string& name);
// The same flush through a descriptor the caller holds open (name is for
// the fault seam and the message only).
[[nodiscard]] int tv_sync_fd(int fd, const std::string& name);

// ---- Path names (text only, never touch the disk) -------------------------

// All before the last "/"; "." for a bare name, "/" for "/name".
std::string tv_dirname(const std::string& path);
// All behind the last "/"; empty for a path ending in "/".
std::string tv_filename(const std::string& path);
// The file name up to before its last "."; both "/" and "\" end the search
// backward, so "a.d/file" gives "file" and ".cfg" gives "".
std::string tv_basename(const std::string& path);
// The text behind the last "." of the file name, with the same bounds; empty
// when the file name has no ".".
std::string tv_extension(const std::string& path);
// The components between separators ("/" and "\"), empty ones dropped; root
// becomes the leading separator of an absolute path, or "".
void tv_split_path(const std::string& path, std::vector<std::string>& parts, std::string& root);
// The first character is "/" or "\".
bool tv_is_absolute_path(const std::string& path);
// Drops "." components, lets ".." take back the component before it, and
// joins repeated separators. A ".." that climbs above a relative path stays
// in front; above "/" it is dropped. The empty result is "." ("/" for an
// absolute path); no separator is left at the end. With bothSeparators "\"
// separates too (a path written on Windows) and the result uses "/".
std::string tv_clean_pathname(const std::string& path, bool bothSeparators);

// ---- Access rights kept by the platform -----------------------------------

// A sandboxed macOS build must keep a bookmark to reopen a file the user
// picked; on the systems this builds for any path the user can name opens
// again, so these do nothing and give TVErrC_ok. Callers don't depend on
// their result.
int store_security_bookmark(const std::string& key, const std::string& path);
int access_security_bookmark(const std::string& key);

#endif // TVFILEUTILS_H
