#pragma once

namespace quorbel {

/// Serves one request: header, set-up of the site and its log, reading, translation and the answer, from the CGI
/// environment and standard input to standard output. Returns 0 once the request reached translation, else -1;
/// `programPath` is told in the log.
///
/// Begins with ResetRun, so a process may serve any number of requests one after another; one thread at a time.
/// What goes through the C library's standard output is flushed by its owner.
int ServeRequest(const char* programPath);

/// Forgets everything that one run leaves for the next: the answer, the method, the command records, the
/// addresses and passwords of the request, and the result. The logs stay.
void ResetRun();

/// Reads the site's configuration and sets its logs up as the first run of a process does, for a process that only its
/// children serve requests for. What fails is tried again, and told, by each run.
void PrepareRuns();

}  // namespace quorbel
