#pragma once

#include "platform/posix/FileDescriptor.h"

#include <array>
#include <ctime>
#include <string>
#include <sys/stat.h>
#include <sys/types.h>

// The calls that each system has under names of its own; one source file per system defines them. Unless said otherwise
// a failure is -1, false or a descriptor that is not open, with errno.
namespace platform {

enum class Links { Followed, Refused };

// Makes a pipe whose ends close in programs that this one starts.
bool makePipe(FileDescriptor& readEnd, FileDescriptor& writeEnd);

// Opens a folder as a place only: to look at it and to reach its entries by name. Where the system allows it, this
// needs no right to read the folder. A relative name begins in the open folder.
FileDescriptor openPlace(int folder, const char* name, Links links);

// Changes the mode of a folder that is open as a place.
bool changeModeOfPlace(int place, mode_t mode);

// Whether the open folder is the top of a mounted volume, or of another view of one. False where the system cannot
// tell.
bool isMountRoot(int folder);

// Renames an item; fails with EEXIST when anything is at the new place, and with ENOTSUP where the file system cannot
// promise that.
bool renameExclusively(int fromFolder, const char* from, int toFolder, const char* to);

// Makes a file that shares its data with the open one until either changes, with its attributes, open for reading. Not
// open, and nothing made, where the volume cannot do that.
FileDescriptor cloneFile(int from, int toFolder, const char* to);

// Copies bytes between two files without a way through this program, from and to where both stand, and moves both
// behind them. Their number: less than asked for, 0 included, says nothing about the end of the file.
ssize_t copyPiece(int from, int to, std::size_t length);

// The same for all that is left of the file, as far as the system gets by itself.
off_t copyDataInSystem(int from, int to);

// Gives the open file or folder `to` the extended attributes of `from` that belong to users, where both file systems
// have them. Throws a FileFailure.
void copyExtendedAttributes(int from, int to, const std::string& fromPath, const std::string& toPath);

// Removes the extended attribute.
int removeAttribute(const char* path, const char* name, Links links);

// The times of access and modification, as futimens takes them.
std::array<timespec, 2> timesOf(const struct stat& status);

// This process's environment, null-terminated.
char** environment();

// For the time between fork and exec; these make plain system calls only.

// Forks a process that was itself forked from one with several threads.
pid_t forkAgain();

// Has the system kill this process when the thread that started it ends. Does nothing where the system cannot do that.
void endWithStarter();

// Marks every descriptor but the standard streams to close when another program takes over, as far as that is possible.
void closeInPrograms();

} // namespace platform
