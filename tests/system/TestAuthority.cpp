#include "tests/system/TestAuthority.h"

#include <openssl/bio.h>
#include <openssl/evp.h>
#include <openssl/pem.h>
#include <openssl/x509v3.h>

#include <atomic>
#include <stdexcept>

namespace quorbel {

namespace {

constexpr long kDay = 24L * 60 * 60;

long NextSerial() {
    static std::atomic<long> serial = 0;
    return ++serial;
}

void AddExtension(X509* certificate, int kind, const std::string& value) {
    X509_EXTENSION* extension = X509V3_EXT_conf_nid(nullptr, nullptr, kind, value.c_str());
    if (extension == nullptr) throw std::runtime_error("not an extension: " + value);
    X509_add_ext(certificate, extension, -1);
    X509_EXTENSION_free(extension);
}

/// A certificate with a key of its own, not signed yet. No two share a subject, as verification looks issuers up
/// by it.
Credential Unsigned(int daysLeft) {
    Credential made{decltype(Credential::key)(EVP_EC_gen("P-256")),
                    decltype(Credential::certificate)(X509_new())};
    X509* certificate = made.certificate.get();
    const long serial = NextSerial();
    const std::string name = "Test " + std::to_string(serial);
    X509_set_version(certificate, X509_VERSION_3);
    ASN1_INTEGER_set(X509_get_serialNumber(certificate), serial);
    X509_gmtime_adj(X509_getm_notBefore(certificate), -10 * kDay);
    X509_gmtime_adj(X509_getm_notAfter(certificate), daysLeft * kDay);
    X509_set_pubkey(certificate, made.key.get());
    X509_NAME_add_entry_by_txt(X509_get_subject_name(certificate), "CN", MBSTRING_ASC,
                               reinterpret_cast<const unsigned char*>(name.c_str()), -1, -1, 0);
    return made;
}

void Sign(const Credential& subject, const Credential& issuer) {
    X509_set_issuer_name(subject.certificate.get(), X509_get_subject_name(issuer.certificate.get()));
    if (X509_sign(subject.certificate.get(), issuer.key.get(), EVP_sha256()) == 0) {
        throw std::runtime_error("cannot sign a certificate");
    }
}

}  // namespace

TestAuthority::TestAuthority() : own_(Unsigned(10)) {
    AddExtension(own_.certificate.get(), NID_basic_constraints, "critical,CA:TRUE");
    Sign(own_, own_);
}

Credential TestAuthority::Issue(const std::string& names, int daysLeft) const {
    Credential made = Unsigned(daysLeft);
    AddExtension(made.certificate.get(), NID_subject_alt_name, names);
    Sign(made, own_);
    return made;
}

std::string TestAuthority::Pem() const {
    const std::unique_ptr<BIO, decltype(&BIO_free_all)> memory(BIO_new(BIO_s_mem()), BIO_free_all);
    PEM_write_bio_X509(memory.get(), own_.certificate.get());
    char* text = nullptr;
    const long length = BIO_get_mem_data(memory.get(), &text);
    return {text, static_cast<std::size_t>(length)};
}

std::string TestAuthority::NameInADirectory() const {
    int known = 0;
    char name[16];
    std::snprintf(name, sizeof name, "%08lx.0",
                  X509_NAME_hash_ex(X509_get_subject_name(own_.certificate.get()), nullptr, nullptr, &known));
    return name;
}

}  // namespace quorbel
