#include "TestKeys.h"

#include <boost/json/parse.hpp>
#include <boost/json/serialize.hpp>
#include <cjose/cjose.h>
#include <cstdlib>
#include <stdexcept>
#include <vector>

namespace {

void require(bool holds, const cjose_err &error)
{
    if (!holds)
        throw std::runtime_error(error.message ? error.message : "cjose");
}

} // namespace

TestKey::TestKey(cjose_jwk_t *key, const std::string &id)
    : m_key(key, [](cjose_jwk_t *owned) { cjose_jwk_release(owned); })
    , m_id(id)
{
    cjose_err error{};
    require(cjose_jwk_set_kid(key, id.data(), id.size(), &error), error);
}

TestKey TestKey::rsa(const std::string &id, std::size_t bits)
{
    cjose_err error{};
    auto *const key = cjose_jwk_create_RSA_random(bits, nullptr, 0, &error);
    require(key, error);
    return TestKey(key, id);
}

TestKey TestKey::elliptic(const std::string &id)
{
    cjose_err error{};
    auto *const key = cjose_jwk_create_EC_random(CJOSE_JWK_EC_P_256, &error);
    require(key, error);
    return TestKey(key, id);
}

TestKey TestKey::shared(const std::string &id, const std::string &bytes)
{
    cjose_err error{};
    auto *const key =
        cjose_jwk_create_oct_spec(reinterpret_cast<const std::uint8_t *>(bytes.data()), bytes.size(), &error);
    require(key, error);
    return TestKey(key, id);
}

boost::json::object TestKey::publicPart() const
{
    cjose_err error{};
    const std::unique_ptr<char, decltype(&std::free)> text(cjose_jwk_to_json(m_key.get(), false, &error),
                                                           &std::free);
    require(text != nullptr, error);
    return boost::json::parse(text.get()).as_object();
}

std::string TestKey::sign(const boost::json::object &header, const std::string &content) const
{
    cjose_err error{};
    const std::unique_ptr<cjose_header_t, decltype(&cjose_header_release)> made(cjose_header_new(&error),
                                                                                &cjose_header_release);
    for (const auto &field : header) {
        const auto name = std::string(field.key());
        const auto text = field.value().is_string() ? std::string(field.value().as_string())
                                                    : boost::json::serialize(field.value());
        const auto set = field.value().is_string() ? cjose_header_set : cjose_header_set_raw;
        require(set(made.get(), name.c_str(), text.c_str(), &error), error);
    }
    const std::unique_ptr<cjose_jws_t, decltype(&cjose_jws_release)> token(
        cjose_jws_sign(m_key.get(), made.get(), reinterpret_cast<const std::uint8_t *>(content.data()),
                       content.size(), &error),
        &cjose_jws_release);
    require(token != nullptr, error);
    const char *text = nullptr;
    require(cjose_jws_export(token.get(), &text, &error), error);
    return text;
}

std::string TestKey::sign(const boost::json::object &claims) const
{
    cjose_err error{};
    const bool isRsa = cjose_jwk_get_kty(m_key.get(), &error) == CJOSE_JWK_KTY_RSA;
    return sign({{"alg", isRsa ? "RS256" : "ES256"}, {"kid", m_id}}, boost::json::serialize(claims));
}

const TestKey &firstKey()
{
    static const auto key = TestKey::rsa("first");
    return key;
}

const TestKey &secondKey()
{
    static const auto key = TestKey::rsa("second");
    return key;
}

const TestKey &ellipticKey()
{
    static const auto key = TestKey::elliptic("elliptic");
    return key;
}

std::string keySet(const std::vector<TestKey> &keys)
{
    boost::json::array list;
    for (const auto &key : keys)
        list.push_back(key.publicPart());
    return boost::json::serialize(boost::json::object{{"keys", list}});
}
