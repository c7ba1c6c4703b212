// The subcommands of zormodel; each adds itself to the application.
#pragma once

#include <CLI/CLI.hpp>

namespace zormodel {

void add_objects_command(CLI::App& app);
void add_descramble_command(CLI::App& app);
void add_profile_command(CLI::App& app);
void add_tools_command(CLI::App& app);
void add_polygon_command(CLI::App& app);
void add_dxf_command(CLI::App& app);
void add_contours_command(CLI::App& app);
void add_stl_command(CLI::App& app);
void add_info_command(CLI::App& app);
void add_convert_command(CLI::App& app);

// Exit codes, the same in every subcommand.
enum ExitCode { kExitOk = 0, kExitRead = 1, kExitUsage = 2, kExitWrite = 3 };

// Exit code for a file that is missing or cannot be read; prints the one-line
// message to standard error.
int fail_unreadable(const std::string& path);
// Prints "zormodel: PATH: cannot be written (reason)" and throws exit 3.
[[noreturn]] void fail_unwritable(const std::string& path);

// The output stream for path: standard output for "-"; null when it cannot
// be opened. close_output flushes and closes it (never standard output);
// false when anything failed to be written.
std::FILE* open_output(const std::string& path, const char* mode = "w");
bool close_output(std::FILE* out);

// Stops the progress bar and clears its line; everything zormodel prints
// after a read goes through here first.
void finish_progress();
// True when path names a readable regular file.
bool readable_file(const std::string& path);

// Parses "mm" / "in" into the module's unit codes (1, 2).
int unit_code(const std::string& name);

}  // namespace zormodel
