// What somebody asks the coach. Whatever it was, what leaves for the endpoint is as it is meant to be.
#include "require.h"
#include "suggestionRequest.h"
#include "textChecks.h"

#include <boost/json.hpp>
#include <cstdint>

// NOLINTNEXTLINE(readability-identifier-naming)
extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t *data, std::size_t size)
{
    namespace json = boost::json;
    const auto request = readSuggestionRequest({reinterpret_cast<const char *>(data), size});
    if (!request)
        return 0;
    const auto progress = characterCount(request->progress);
    require(progress && *progress <= SuggestionRequest::longestProgress, "the progress's length");
    require(trimmed(request->topic) == request->topic, "a trimmed topic");
    require(isTopicTooLong(*request) == (characterCount(request->topic) > SuggestionRequest::longestTopic),
            "a topic's length");

    const auto body = json::parse(chatBody(*request, "model"));
    const auto &messages = body.at("messages").as_array();
    require(messages.size() == 2, "two messages");
    require(messages[0].at("content") ==
                json::parse(chatBody({"", request->language, ""}, "model")).at_pointer("/messages/0/content"),
            "the same rules for every topic");
    const auto said = json::parse(std::string_view(messages[1].at("content").as_string()));
    require(said == (json::object{{"topic", request->topic}, {"progress", request->progress}}),
            "topic and progress");
    return 0;
}
