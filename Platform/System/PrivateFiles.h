#pragma once

#include "Platform/System/FileDescriptor.h"

#include <chrono>
#include <filesystem>
#include <string_view>

/// Making files of ours: 0600, in directories that are 0700 where we make them, whatever the umask
/// says; what exists keeps its permissions. Links in their place and on the way there are followed
/// as `followOwnLinks` does, so that nothing lands where another user chose. An existing file of
/// another user's that is open to others is not taken for ours. The administrator makes them the
/// directory's owner's (`ActingAsOwner`). Failures are std::system_error, those by other users
/// ForeignFileError, and name no more than the path. Callable from any thread.
namespace tokwatch {

/// Makes the directory and whatever is missing above it.
void makePrivateDirectory(const std::filesystem::path& directory);

/// Makes the file, empty, where there is none, and answers where it really is.
/// An existing file is never opened: closing it again would drop all locks that this process holds
/// on it, among them those of an open database.
std::filesystem::path createPrivately(const std::filesystem::path& file);

/// Opens the file for reading and writing, and makes it where there is none. Not for databases.
FileDescriptor openPrivately(const std::filesystem::path& file);

/// Takes the lock that the file stands for, made where there is none; held until the descriptor is
/// closed. Where the file cannot be opened, its directory stands for it. Not open where the lock
/// cannot be taken within `patience`, or not at all.
FileDescriptor lockPrivately(const std::filesystem::path& file, std::chrono::milliseconds patience);

/// Makes or replaces the file as a whole, so that neither a reader nor a power cut meets half of
/// it; what is there and is no regular file is left alone. What earlier calls left behind that were
/// killed is removed.
void replacePrivately(const std::filesystem::path& file, std::string_view contents);

/// The same for what can be made anew at any time: a file with these contents is left as it is, and
/// nothing waits for the disk. A reader never meets half of it; after a power cut it may be empty,
/// until it is written here again.
void replaceUnlessSame(const std::filesystem::path& file, std::string_view contents);

/// The same for a file that the user named and others are to read: 0644 where it is new; what
/// exists keeps its permissions.
void replaceForOthers(const std::filesystem::path& file, std::string_view contents);

} // namespace tokwatch
