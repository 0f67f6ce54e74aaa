#pragma once

#include <memory>
#include <string>

#include "process/DeliveryEntry.h"
#include "process/HttpPoster.h"
#include "soap/RequestRecord.h"

class CVsysEventLogInterface;

namespace quorbel {

/// Whether `cvlogs.ini` in the configuration directory has a section for the module "Deliveries".
bool HasDeliveryLog(const std::string& configDirectory);

/// Its log, which may be not ready; null when there is no writer for it. To be called only where it has a section, since
/// one would be added.
std::unique_ptr<CVsysEventLogInterface> OpenDeliveryLog(const std::string& configDirectory);

/// Tells the delivery journal what becomes of one request: one entry, and at level debug one more before the post.
///
/// Never tells a message's text, a password or what an address says besides scheme, host and port. Nothing is thrown: a failure
/// to write goes to the system log only.
class DeliveryJournal {
public:
    /// `log` may be null: then nothing is written. Log and record are borrowed. Takes what the environment says of the
    /// client: REMOTE_ADDR, REMOTE_USER and HTTP_X_REQUEST_ID, without which the request gets a random id.
    DeliveryJournal(CVsysEventLogInterface* log, const RequestRecord& record) noexcept;

    /// The request is posted next. When nothing further is told, its outcome stays unknown to the journal.
    void Sending() noexcept;
    /// The whole text of the fault that answers the request; nothing was posted.
    void Refused(std::string_view fault) noexcept;
    /// What became of the post. `reply` is what the server said; of a query's it tells nothing.
    void Posted(const PostReport& post, std::string_view reply) noexcept;
    /// The program failed on the way, for lack of memory; the post may have happened when Sending was told.
    void Failed(std::string_view fault) noexcept;

private:
    /// Runs a step that may run out of memory; the journal then lacks the entry, the page goes on.
    template <typename Step>
    void Guarded(Step step) noexcept;
    void Write(Outcome outcome);

    CVsysEventLogInterface* const log_;
    const RequestRecord& record_;
    Delivery delivery_;
    bool isSending_ = false;
};

}  // namespace quorbel
