// The subcommands of zeltoport. Each function adds one family of subcommands to the program; the
// callbacks run while the command line is parsed, with `session` and `caller` still alive.

#ifndef ZELTO_TOOLS_ZELTOPORT_COMMAND_H
#define ZELTO_TOOLS_ZELTOPORT_COMMAND_H

#include <CLI/CLI.hpp>

#include "tools/zeltoport/export_caller.h"
#include "tools/zeltoport/session.h"

namespace zelto::tools {

void AddWindowCommands(CLI::App& app, ExportCaller& caller);
void AddGuidanceCommands(CLI::App& app, ExportCaller& caller);
void AddQueryCommands(CLI::App& app, ExportCaller& caller);
void AddNmeaCommand(CLI::App& app, ExportCaller& caller);
void AddDriveCommand(CLI::App& app, ExportCaller& caller);
void AddExportCommand(CLI::App& app, ExportCaller& caller);  // with GPX
void AddDeviceCommand(CLI::App& app, Session& session);
void AddClockCommand(CLI::App& app, Session& session);
void AddCrcCommand(CLI::App& app, Session& session);
void AddDescribeCommand(CLI::App& app, Session& session);
void AddPictureCommand(CLI::App& app, ExportCaller& caller);
void AddRunCommand(CLI::App& app, Session& session);
void AddTortureCommand(CLI::App& app, Session& session);
void AddRecordCommand(CLI::App& app, Session& session);
void AddTraceCommand(CLI::App& app, Session& session);
void AddWhyCommand(CLI::App& app, Session& session);
void AddDoctorCommand(CLI::App& app, ExportCaller& caller);

}  // namespace zelto::tools

#endif
