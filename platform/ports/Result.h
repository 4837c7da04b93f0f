#pragma once

#include <QString>

#include <utility>
#include <variant>

/// Why an operation failed, in words fit to show a user (the system's own description where there is one).
struct Failure
{
    QString reason;

    bool operator==(const Failure &) const = default;
};

/// Stands for the value of an operation that has none.
struct Done
{
    bool operator==(const Done &) const = default;
};

/// The value of an operation, or the reason why there is none. Reading the half that is not there aborts.
template <typename Value = Done>
class [[nodiscard]] Result
{
public:
    Result(Value value)
        : m_outcome(std::move(value))
    {}
    Result(Failure failure)
        : m_outcome(std::move(failure))
    {}

    bool ok() const { return std::holds_alternative<Value>(m_outcome); }
    explicit operator bool() const { return ok(); }

    const Value &value() const { return *checked(std::get_if<Value>(&m_outcome)); }
    /// Moves the value out; for what is dear to copy.
    Value take() { return std::move(*checked(std::get_if<Value>(&m_outcome))); }
    const QString &reason() const { return checked(std::get_if<Failure>(&m_outcome))->reason; }
    Failure failure() const { return *checked(std::get_if<Failure>(&m_outcome)); }

private:
    template <typename Half>
    static Half *checked(Half *half)
    {
        Q_ASSERT_X(half, "Result", "the half that is not there was read");
        if (!half)
            qFatal("Result: the half that is not there was read");
        return half;
    }

    std::variant<Value, Failure> m_outcome;
};
