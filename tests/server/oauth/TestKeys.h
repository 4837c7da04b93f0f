#pragma once

#include <boost/json/array.hpp>
#include <boost/json/object.hpp>
#include <memory>
#include <string>
#include <vector>

/// A key of a provider, made for this run.
class TestKey
{
public:
    static TestKey rsa(const std::string &id, std::size_t bits = 2048);
    static TestKey elliptic(const std::string &id);
    /// One for HS256, of these bytes.
    static TestKey shared(const std::string &id, const std::string &bytes);

    /// What everybody may see of it, as in a key set.
    boost::json::object publicPart() const;

    /// A token signed with it. `header` is alg and what else.
    std::string sign(const boost::json::object &header, const std::string &content) const;
    /// The same, with its own id, by RS256 or ES256.
    std::string sign(const boost::json::object &claims) const;

private:
    explicit TestKey(struct _cjose_jwk_int *key, const std::string &id);

    std::shared_ptr<struct _cjose_jwk_int> m_key;
    std::string m_id;
};

/// The same key in every test of this run: they take long to make.
const TestKey &firstKey();
const TestKey &secondKey();
const TestKey &ellipticKey();

/// {"keys": [...]}
std::string keySet(const std::vector<TestKey> &keys);
