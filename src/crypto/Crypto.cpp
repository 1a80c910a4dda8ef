#include "Crypto.h"

#include <algorithm>
#include <gcrypt.h>
#include <new>

namespace {

/// Makes the library ready, unless the program has done so.
void initialise() {
    static const bool isReady = [] {
        if (gcry_control(GCRYCTL_INITIALIZATION_FINISHED_P) == 0) {
            (void)gcry_check_version(nullptr);
            // Nothing secret is held here.
            gcry_control(GCRYCTL_DISABLE_SECMEM, 0);
            gcry_control(GCRYCTL_INITIALIZATION_FINISHED, 0);
        }
        return true;
    }();
    (void)isReady;
}

bool succeeds(gcry_error_t error) {
    if (gcry_err_code(error) == GPG_ERR_ENOMEM) {
        throw std::bad_alloc();
    }
    return error == 0;
}

struct ExpressionCloser {
    void operator()(gcry_sexp_t expression) const { gcry_sexp_release(expression); }
};
using Expression = std::unique_ptr<gcry_sexp, ExpressionCloser>;

/// The expression that `format` describes, with the bytes of one part for each "%b" in it; null if there is none.
Expression expressionOf(const char* format, KvTBytes first, KvTBytes second = {}) {
    gcry_sexp_t built = nullptr;
    const bool isBuilt = succeeds(gcry_sexp_build(&built, nullptr, format, static_cast<int>(first.size()), first.data(),
                                                  static_cast<int>(second.size()), second.data()));
    return Expression(isBuilt ? built : nullptr);
}

bool verifies(const Expression& signature, const Expression& data, const Expression& key) {
    return signature != nullptr && data != nullptr && key != nullptr &&
           succeeds(gcry_pk_verify(signature.get(), data.get(), key.get()));
}

} // namespace

struct KvCSha256::State {
    gcry_md_hd_t handle = nullptr;
};

KvCSha256::KvCSha256() : state_(std::make_unique<State>()) {
    initialise();
    if (gcry_md_open(&state_->handle, GCRY_MD_SHA256, 0) != 0) {
        throw std::bad_alloc();
    }
}

KvCSha256::~KvCSha256() {
    gcry_md_close(state_->handle);
}

void KvCSha256::add(KvTBytes bytes) {
    gcry_md_write(state_->handle, bytes.data(), bytes.size());
}

KvTSha256 KvCSha256::digest() const {
    gcry_md_hd_t copy = nullptr;
    if (gcry_md_copy(&copy, state_->handle) != 0) {
        throw std::bad_alloc();
    }
    KvTSha256 digest{};
    const std::uint8_t* const bytes = gcry_md_read(copy, GCRY_MD_SHA256);
    std::copy_n(bytes, digest.size(), digest.begin());
    gcry_md_close(copy);
    return digest;
}

KvTSha256 sha256Of(KvTBytes bytes) {
    initialise();
    KvTSha256 digest{};
    gcry_md_hash_buffer(GCRY_MD_SHA256, digest.data(), bytes.data(), bytes.size());
    return digest;
}

KvTSha512 sha512Of(KvTBytes bytes) {
    initialise();
    KvTSha512 digest{};
    gcry_md_hash_buffer(GCRY_MD_SHA512, digest.data(), bytes.data(), bytes.size());
    return digest;
}

std::string hexOf(KvTBytes bytes) {
    constexpr std::string_view digits = "0123456789abcdef";
    std::string text;
    text.reserve(2 * bytes.size());
    for (const std::uint8_t byte : bytes) {
        text += digits[byte >> 4U];
        text += digits[byte & 0xFU];
    }
    return text;
}

bool verifiesEd25519(KvTBytes key, KvTBytes message, KvTBytes signature) {
    constexpr std::size_t keySize = 32;
    constexpr std::size_t halfSize = 32;
    if (key.size() != keySize || signature.size() != 2 * halfSize) {
        return false;
    }
    initialise();
    return verifies(
        expressionOf("(sig-val (eddsa (r %b) (s %b)))", signature.first(halfSize), signature.subspan(halfSize)),
        expressionOf("(data (flags eddsa) (hash-algo sha512) (value %b))", message),
        expressionOf("(public-key (ecc (curve Ed25519) (flags eddsa) (q %b)))", key));
}

bool verifiesEcdsaP256(KvTBytes point, KvTBytes message, KvTBytes r, KvTBytes s) {
    constexpr std::size_t pointSize = 65;
    constexpr std::uint8_t notCompressed = 4;
    if (point.size() != pointSize || point.front() != notCompressed) {
        return false;
    }
    initialise();
    const KvTSha256 digest = sha256Of(message);
    return verifies(expressionOf("(sig-val (ecdsa (r %b) (s %b)))", r, s),
                    expressionOf("(data (flags raw) (hash sha256 %b))", digest),
                    expressionOf("(public-key (ecc (curve \"NIST P-256\") (q %b)))", point));
}

bool verifiesRsaSha512(KvTBytes modulus, KvTBytes exponent, KvTBytes message, KvTBytes signature) {
    initialise();
    const KvTSha512 digest = sha512Of(message);
    return verifies(expressionOf("(sig-val (rsa (s %b)))", signature),
                    expressionOf("(data (flags pkcs1) (hash sha512 %b))", digest),
                    expressionOf("(public-key (rsa (n %b) (e %b)))", modulus, exponent));
}
