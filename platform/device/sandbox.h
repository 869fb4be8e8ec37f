#pragma once

// The application's sandbox: the folders that the handset gives an application, kept in the XDG data directory.
//
//   …/morvane/             root; becomes the working directory
//   …/morvane/app          link to the installed package
//   …/morvane/data         the application's own files; HOME points here
//   …/morvane/shared/camera link to the folder "Camera" in the user's Pictures

#include <string>

/// The user's directories. Absolute paths.
struct UserDirs {
  std::string config, data, cache, state;
  std::string pictures, videos;  ///< the XDG folders, or Pictures and Videos in the home folder
};

/// Resolves the XDG directories of this process, once: later changes of HOME do not move them. Any thread.
const UserDirs& user_dirs();

/// The camera roll: folder "Camera" in the user's Videos.
std::string camera_roll_dir();

/// The installed package: next to the program in a build, in share/morvane of an installation.
/// @return empty if there is none
std::string find_package_dir();

/// Creates the sandbox's folders and links under dirs.data/morvane. Leaves an existing folder in a link's place alone;
/// replaces a link that points elsewhere.
/// @param package_dir  the installed package
/// @param root         receives the sandbox's root
/// @return 0 or an errno value, after one line on the error stream
int prepare_sandbox(const UserDirs& dirs, const std::string& package_dir, std::string* root);

/// Prepares the sandbox, pins the XDG directories in the environment (other libraries and child processes keep them),
/// makes the root the working directory and points HOME at its data folder. Call once, before other threads run.
/// @return 0 or an errno value, after one line on the error stream
int enter_sandbox(const std::string& package_dir);
