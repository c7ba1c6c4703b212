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

// Exit code for a file that is missing or cannot be read; prints the one-line
// message to standard error.
int fail_unreadable(const std::string& path);
// True when path names a readable regular file.
bool readable_file(const std::string& path);

// Parses "mm" / "in" into the module's unit codes (1, 2).
int unit_code(const std::string& name);

}  // namespace zormodel
