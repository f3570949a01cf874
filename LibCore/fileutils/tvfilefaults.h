#ifndef TVFILEFAULTS_H
#define TVFILEFAULTS_H

// TVFileFaults: the seam through which a test makes a file operation fail.
//
// Constructing one installs its hook for the whole process; destroying it
// puts back the hook that was there before, so scopes nest. With no hook
// installed every operation goes to the system as usual.
//
// The file functions ask should_fail() just before the system call that
// does the work, and when the hook answers true they report exactly the
// failure the system would have caused, with nothing on the disk changed:
//
//   E_OpRename     tv_rename_file, the move itself      (path = from, target = to)
//   E_OpCopy       tv_copy_file, the copy itself        (path = from, target = to)
//   E_OpDelete     tv_delete_file, the unlink           (path)
//   E_OpCreateDir  tv_create_dir, the making of folders (path)
//   E_OpWrite      tv_dir_writable's test file, TVFile::set_times, and
//                  any writer of file contents above this layer (path)
//   E_OpRead       tv_file_compare's opens, and any reader of file contents
//                  above this layer                     (path)
//   E_OpSync       tv_sync_file, tv_sync_dir            (path)
//
// Probes (tv_file_exists, tv_dir_exists, tv_file_modified) never ask: they
// change nothing. A crash after step k of a save is a hook that counts the
// operations and fails every one from k on.
//
// Install and remove hooks only while no other thread does file work; the
// hook itself is called on whichever thread does the operation.

#include <functional>
#include <string>

class TVFileFaults
{
public:
    enum E_FileOp {
        E_OpRename,
        E_OpCopy,
        E_OpDelete,
        E_OpCreateDir,
        E_OpWrite,
        E_OpRead,
        E_OpSync
    };

    // Answers true to make op on path fail; target is the second path of a
    // rename or copy and empty otherwise.
    using FailFn =
        std::function<bool(E_FileOp op, const std::string& path, const std::string& target)>;

    explicit TVFileFaults(FailFn fail);
    ~TVFileFaults();
    TVFileFaults(const TVFileFaults&) = delete;
    TVFileFaults& operator=(const TVFileFaults&) = delete;

    // What the innermost installed hook says; false with none.
    static bool should_fail(E_FileOp op, const std::string& path,
                            const std::string& target = std::string());

private:
    FailFn m_fail;
    TVFileFaults* m_previous;
};

#endif // TVFILEFAULTS_H
