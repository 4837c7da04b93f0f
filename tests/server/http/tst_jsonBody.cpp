// Which bodies are a JSON object.
#include "jsonBody.h"

#include <gtest/gtest.h>
#include <string>

TEST(JsonBody, isOneObjectInUtf8)
{
    const auto object = jsonObject(" {\"a\": \"\xD1\x8F\\n\", \"b\": [1, {\"c\": null}]} \n");
    ASSERT_TRUE(object);
    EXPECT_EQ(textOf(*object, "a"), "я\n");
    EXPECT_EQ(textOf(*object, "b"), std::nullopt);
    EXPECT_EQ(textOf(*object, "c"), std::nullopt);
}

TEST(JsonBody, isNothingElse)
{
    const std::string nul(1, '\0');
    for (const std::string &body :
         {std::string(), std::string("{"), std::string("{}{}"), std::string("[{}]"), std::string("\"{}\""),
          std::string("null"), std::string("{} x"), std::string("{'a':1}"), std::string("{\"a\":1,}"),
          std::string("{a:1}"), std::string("/**/{}"), std::string("{\"a\":NaN}"), std::string("{\"a\":01}"),
          std::string("{\"a\":\"\xC0\xAF\"}"), std::string("{\"a\":\"\xED\xA0\x80\"}"),
          std::string("{\"a\":\"\\ud800\"}"), std::string("{\"a\":\"\n\"}"), "{}" + nul,
          std::string("\xEF\xBB\xBF{}")})
        EXPECT_FALSE(jsonObject(body)) << body;
}

TEST(JsonBody, hasItsBounds)
{
    const auto nested = [](int depth) {
        std::string body = "1";
        for (int level = 0; level < depth; ++level)
            body = "{\"a\":" + body + "}";
        return body;
    };
    EXPECT_TRUE(jsonObject(nested(8)));
    EXPECT_FALSE(jsonObject(nested(9)));
    EXPECT_FALSE(jsonObject(std::string(100'000, '[')));
    EXPECT_TRUE(jsonObject("{}" + std::string(8, ' '), 10));
    EXPECT_FALSE(jsonObject("{}" + std::string(9, ' '), 10));
}

TEST(JsonBody, takesTheLastOfANameThatStandsTwice)
{
    EXPECT_EQ(textOf(*jsonObject(R"({"a":"1","a":"2"})"), "a"), "2");
}
