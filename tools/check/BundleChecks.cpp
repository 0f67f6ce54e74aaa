#include <openssl/pem.h>
#include <openssl/x509.h>

#include <cstdio>
#include <fstream>
#include <iterator>
#include <memory>

#include "CVException.h"
#include "tools/check/Finding.h"

namespace quorbel {

namespace {

constexpr const char* kSystemBundle = "/etc/ssl/certs/ca-certificates.crt";

struct FreeCertificate {
    void operator()(X509* certificate) const noexcept { X509_free(certificate); }
};
struct CloseFile {
    void operator()(std::FILE* file) const noexcept { std::fclose(file); }
};

std::string NameOf(X509* certificate) {
    char name[256];
    X509_NAME_oneline(X509_get_subject_name(certificate), name, sizeof name);
    return name;
}

bool HasExpired(X509* certificate) {
    return X509_cmp_current_time(X509_get0_notAfter(certificate)) < 0;
}

std::string ContentOf(const std::string& path) {
    std::ifstream file(path, std::ios::binary);
    return {std::istreambuf_iterator<char>(file), {}};
}

}  // namespace

Findings CheckBundle(const Site& site) {
    const std::string path = site.config + "/ca-bundle.crt";
    const std::unique_ptr<std::FILE, CloseFile> file(std::fopen(path.c_str(), "re"));
    if (!file) {
        return {
            {State::Warning, "ca-bundle", path + ": " + GetSystemErrorText() + ": posts over https fail"}};
    }
    const bool isSystems = ContentOf(path) == ContentOf(kSystemBundle);
    Findings findings;
    int count = 0;
    while (const std::unique_ptr<X509, FreeCertificate> certificate{
        PEM_read_X509(file.get(), nullptr, nullptr, nullptr)}) {
        ++count;
        if (isSystems || !HasExpired(certificate.get())) continue;
        findings.push_back({State::Warning, "ca-bundle", "has expired: " + NameOf(certificate.get())});
    }
    const std::string held = path + " holds " + std::to_string(count) + " authorities";
    if (count == 0) {
        findings.push_back({State::Warning, "ca-bundle", held + ": posts over https fail"});
    } else if (isSystems) {
        findings.push_back({State::Ok, "ca-bundle",
                            held + ", the system's whole list: those of the paging servers would do"});
    } else {
        findings.push_back({State::Ok, "ca-bundle", held});
    }
    return findings;
}

}  // namespace quorbel
