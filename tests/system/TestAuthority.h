#pragma once

#include <openssl/x509.h>

#include <memory>
#include <string>

namespace quorbel {

struct FreeCertificate {
    void operator()(X509* certificate) const { X509_free(certificate); }
};
struct FreeKey {
    void operator()(EVP_PKEY* key) const { EVP_PKEY_free(key); }
};

/// A certificate and its private key.
struct Credential {
    std::unique_ptr<EVP_PKEY, FreeKey> key;
    std::unique_ptr<X509, FreeCertificate> certificate;
};

/// A private certificate authority, made afresh for a test.
class TestAuthority {
public:
    TestAuthority();

    /// For a server of the given names, such as "IP:127.0.0.1" or "DNS:pager.example"; valid from ten days
    /// ago to `daysLeft` days from now.
    Credential Issue(const std::string& names, int daysLeft = 10) const;
    /// The authority's own certificate, as a CA bundle holds it.
    std::string Pem() const;
    /// The name under which a directory of authorities holds it.
    std::string NameInADirectory() const;

private:
    Credential own_;
};

}  // namespace quorbel
