#pragma once

#include <string>

class CVsysEventLogInterface;

namespace quorbel {

// The logs that a run writes. They are kept from one run to the next, which costs a look at the status of cvlogs.ini and
// of the log file; they are set up again as soon as that configuration or the log directory is another one, or the file
// can no longer be written. A database is opened anew for each run. Whoever keeps a pointer must fetch it again for
// each run. Logs in files may be carried over a fork.

/// The log of module "SOAP"; null when it cannot be used. Throws std::bad_alloc.
CVsysEventLogInterface* RunLog(const std::string& configDirectory, const std::string& logDirectory);

/// The delivery journal, for the directories that RunLog was called with; null when the site keeps none or it cannot be
/// opened. Throws std::bad_alloc.
CVsysEventLogInterface* RunJournal();

/// Deletes those that must not be carried over a fork.
void DropLogsBeforeFork();

}  // namespace quorbel
