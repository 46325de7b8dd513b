// How a command ends: what it has to report, and what went wrong, for a person or for a script.
#pragma once

#include <functional>
#include <string>

#include "tools/zemctl/frame/program.h"
#include "tools/zemctl/frame/report.h"
#include "tools/zemctl/frame/results.h"

namespace zemctl {

// A command line that is not one of `command`.
Failure WrongCommandLine(const std::string& message, const std::string& command);

// What `run`, a part of `command`, comes to, also where it throws.
Ending EndingOf(const std::string& command, const std::function<Ending()>& run);

// Standard output gets the report; or, with --json, one document of the version, the command and
// the report. To be called once in a run, this or one of those below.
void ShowReport(const Options& options, const Report& report);

// The same with what went wrong: on standard error, or as "error" in the document.
void ShowFailure(const Options& options, const Report& report, const Failure& failure);

// Nothing but what went wrong.
void ShowFailure(const Options& options, const Failure& failure);

}  // namespace zemctl
