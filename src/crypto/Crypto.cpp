#include "Crypto.h"

#include <algorithm>
#include <array>
#include <gcrypt.h>
#include <new>

namespace {

/// Makes the library ready, unless the program has done so.
void initialise() {
    static const bool isReady = [] {
        if (gcry_control(GCRYCTL_ANY_INITIALIZATION_P) == 0) {
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

constexpr std::size_t ed25519KeySize = 32;
using Ed25519Number = std::array<std::uint8_t, ed25519KeySize>;

/// The order of the base point (RFC 8032, section 5.1), least significant byte first.
constexpr Ed25519Number order = {0xed, 0xd3, 0xf5, 0x5c, 0x1a, 0x63, 0x12, 0x58, 0xd6, 0x9c, 0xf7,
                                 0xa2, 0xde, 0xf9, 0xde, 0x14, 0,    0,    0,    0,    0,    0,
                                 0,    0,    0,    0,    0,    0,    0,    0,    0,    0x10};

/// The y coordinates of the points of order 8: what such a key signs anybody can sign.
constexpr std::array<Ed25519Number, 2> ordersOfEight{
    {{0x26, 0xe8, 0x95, 0x8f, 0xc2, 0xb2, 0x27, 0xb0, 0x45, 0xc3, 0xf4, 0x89, 0xf2, 0xef, 0x98, 0xf0,
      0xd5, 0xdf, 0xac, 0x05, 0xd3, 0xc6, 0x33, 0x39, 0xb1, 0x38, 0x02, 0x88, 0x6d, 0x53, 0xfc, 0x05},
     {0xc7, 0x17, 0x6a, 0x70, 0x3d, 0x4d, 0xd8, 0x4f, 0xba, 0x3c, 0x0b, 0x76, 0x0d, 0x10, 0x67, 0x0f,
      0x2a, 0x20, 0x53, 0xfa, 0x2c, 0x39, 0xcc, 0xc6, 0x4e, 0xc7, 0xfd, 0x77, 0x92, 0xac, 0x03, 0x7a}}};

/// A number that is not below the order stands for the same signature as another one.
bool isBelowOrder(KvTBytes number) {
    return std::lexicographical_compare(number.rbegin(), number.rend(), order.rbegin(), order.rend());
}

struct NumberCloser {
    void operator()(gcry_mpi_t number) const { gcry_mpi_release(number); }
};
using Number = std::unique_ptr<gcry_mpi, NumberCloser>;
struct PointCloser {
    void operator()(gcry_mpi_point_t point) const { gcry_mpi_point_release(point); }
};
using Point = std::unique_ptr<gcry_mpi_point, PointCloser>;
struct CurveCloser {
    void operator()(gcry_ctx_t curve) const { gcry_ctx_release(curve); }
};
using Curve = std::unique_ptr<gcry_context, CurveCloser>;

/// True of a key that is a point of the curve and that the library can calculate with: it ends the process if a
/// coordinate is shorter than its words, as it is for points of order 1, 2 and 4. No honest key is such a point.
bool isSoundPoint(KvTBytes key) {
    constexpr unsigned leastBits = 193;
    constexpr unsigned bitsOfByte = 8;
    Ed25519Number y{};
    std::copy(key.begin(), key.end(), y.begin());
    y.back() &= 0x7FU; // without the sign of x
    if (std::find(ordersOfEight.begin(), ordersOfEight.end(), y) != ordersOfEight.end()) {
        return false;
    }
    gcry_ctx_t made = nullptr;
    if (!succeeds(gcry_mpi_ec_new(&made, nullptr, "Ed25519"))) {
        return false;
    }
    const Curve curve(made);
    const Number encoded(gcry_mpi_set_opaque_copy(nullptr, key.data(), static_cast<unsigned>(key.size()) * bitsOfByte));
    const Point point(gcry_mpi_point_new(0));
    const Number xFound(gcry_mpi_new(0));
    const Number yFound(gcry_mpi_new(0));
    return succeeds(gcry_mpi_ec_decode_point(point.get(), encoded.get(), curve.get())) &&
           gcry_mpi_ec_get_affine(xFound.get(), yFound.get(), point.get(), curve.get()) == 0 &&
           gcry_mpi_get_nbits(xFound.get()) >= leastBits && gcry_mpi_get_nbits(yFound.get()) >= leastBits;
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

KvTSha256 KvCSha256::digest() {
    KvTSha256 digest{};
    const std::uint8_t* const bytes = gcry_md_read(state_->handle, GCRY_MD_SHA256);
    std::copy_n(bytes, digest.size(), digest.begin());
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
    std::string text(2 * bytes.size(), '0');
    auto place = text.begin();
    for (const std::uint8_t byte : bytes) {
        *place++ = digits[byte >> 4U];
        *place++ = digits[byte & 0xFU];
    }
    return text;
}

bool verifiesEd25519(KvTBytes key, KvTBytes message, KvTBytes signature) {
    constexpr std::size_t halfSize = 32;
    if (key.size() != ed25519KeySize || signature.size() != 2 * halfSize) {
        return false;
    }
    initialise();
    const KvTBytes s = signature.subspan(halfSize);
    return isBelowOrder(s) && isSoundPoint(key) &&
           verifies(expressionOf("(sig-val (eddsa (r %b) (s %b)))", signature.first(halfSize), s),
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
    const bool isInRange =
        signature.size() == modulus.size() &&
        std::lexicographical_compare(signature.begin(), signature.end(), modulus.begin(), modulus.end());
    if (!isInRange) {
        return false;
    }
    initialise();
    const KvTSha512 digest = sha512Of(message);
    return verifies(expressionOf("(sig-val (rsa (s %b)))", signature),
                    expressionOf("(data (flags pkcs1) (hash sha512 %b))", digest),
                    expressionOf("(public-key (rsa (n %b) (e %b)))", modulus, exponent));
}
