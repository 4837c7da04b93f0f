#pragma once

#include <algorithm>
#include <memory>
#include <mutex>
#include <spdlog/sinks/base_sink.h>
#include <spdlog/spdlog.h>
#include <string>

/// Keeps what is logged while it lives. Made before whatever logs on other threads, and gone after it.
class CapturedLog
{
public:
    CapturedLog() { spdlog::default_logger()->sinks().push_back(m_sink); }
    CapturedLog(const CapturedLog &) = delete;
    ~CapturedLog() { std::erase(spdlog::default_logger()->sinks(), spdlog::sink_ptr(m_sink)); }

    std::string text() const { return m_sink->text(); }
    bool has(const std::string &part) const { return text().find(part) != std::string::npos; }

private:
    class Sink : public spdlog::sinks::base_sink<std::mutex>
    {
    public:
        std::string text()
        {
            const std::lock_guard lock(mutex_);
            return m_text;
        }

    protected:
        void sink_it_(const spdlog::details::log_msg &message) override
        {
            m_text.append(message.payload.data(), message.payload.size());
            m_text += '\n';
        }
        void flush_() override {}

    private:
        std::string m_text;
    };

    std::shared_ptr<Sink> m_sink = std::make_shared<Sink>();
};
