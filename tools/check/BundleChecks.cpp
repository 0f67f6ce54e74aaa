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

// More than so many is a copy of the system's list, in which there are always some that have expired.
constexpr int kOwnChoice = 50;
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

std::string Listed(const std::vector<std::string>& names) {
    std::string list;
    for (const auto& name : names) list += (list.empty() ? "" : ", ") + name;
    return list;
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
    int count = 0;
    std::vector<std::string> expired;
    while (const std::unique_ptr<X509, FreeCertificate> certificate{
        PEM_read_X509(file.get(), nullptr, nullptr, nullptr)}) {
        ++count;
        if (HasExpired(certificate.get())) expired.push_back(NameOf(certificate.get()));
    }
    std::string text = path + " holds " + std::to_string(count) + " authorities";
    if (count == 0) return {{State::Warning, "ca-bundle", text + ": posts over https fail"}};
    if (ContentOf(path) == ContentOf(kSystemBundle)) text += ", the system's whole list";
    if (!expired.empty()) text += ", " + std::to_string(expired.size()) + " expired: " + Listed(expired);
    const bool matters = !expired.empty() && count <= kOwnChoice;
    return {{matters ? State::Warning : State::Ok, "ca-bundle", text}};
}

}  // namespace quorbel
