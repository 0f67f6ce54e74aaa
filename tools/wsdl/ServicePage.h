#pragma once

#include <string>

#include "soap/Methods.h"

namespace quorbel {

enum class PageForms {
    With,     ///< each method has a form that sends it to the service
    Without,  ///< documentation only; the page then has no script
};

/// The service as one page for a browser: every method with its elements, a sample request and its answers, the faults,
/// and how values travel; made from the tables that the parser reads requests by.
///
/// Self-contained HTML in UTF-8: it asks no host for anything, and its one style and one script are always the same
/// texts, so that a web server can name them by hash in a Content-Security-Policy. kEndpointPlaceholder stands where
/// the service's address goes.
std::string ServicePage(PageForms forms);

/// A request of this method that the service accepts, as a client should send it: compact, szURL2 left out.
std::string SampleRequest(const Method& method);

}  // namespace quorbel
