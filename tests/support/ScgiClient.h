#pragma once

#include <string>
#include <vector>

namespace quorbel {

/// What a web server sends by SCGI in front of a body: the variables ("NAME=value") behind CONTENT_LENGTH and SCGI.
/// A CONTENT_LENGTH among them replaces the body's size.
std::string ScgiHeaderText(const std::vector<std::string>& variables, std::size_t bodySize);

/// One connection to a Unix stream socket, as a web server opens it for a request.
class ScgiClient {
public:
    /// Tries for a while when nobody listens yet.
    explicit ScgiClient(const std::string& path);
    ~ScgiClient();

    ScgiClient(ScgiClient&& other) noexcept;
    ScgiClient(const ScgiClient&) = delete;
    ScgiClient& operator=(const ScgiClient&) = delete;

    /// False when the other side closed the connection.
    bool Send(const std::string& bytes) const;
    void EndSending() const;
    /// All that comes until the other side closes; ends after 60 s of silence, too.
    std::string Receive() const;

private:
    int descriptor_;
};

/// One request and its answer.
std::string AskByScgi(const std::string& path, const std::string& body,
                      const std::vector<std::string>& variables = {"REQUEST_METHOD=POST"});

}  // namespace quorbel
