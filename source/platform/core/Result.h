#pragma once

#include <QString>

#include <optional>
#include <utility>
#include <variant>

namespace inkory
{

/// Why an operation failed, in words that a person can read.
struct Error
{
    QString message;
};

/// The outcome of an operation that can fail in the normal course of things: a value, or the reason why there is none.
template <class T> class [[nodiscard]] Result
{
public:
    Result(T value) : m_outcome(std::move(value)) {}     // NOLINT(google-explicit-constructor): reads as "return value"
    Result(Error error) : m_outcome(std::move(error)) {} // NOLINT(google-explicit-constructor)

    explicit operator bool() const { return std::holds_alternative<T>(m_outcome); }

    /// Only to be asked of a success.
    T &value() { return std::get<T>(m_outcome); }
    const T &value() const { return std::get<T>(m_outcome); }
    T &operator*() { return value(); }
    const T &operator*() const { return value(); }
    T *operator->() { return &value(); }
    const T *operator->() const { return &value(); }

    /// Only to be asked of a failure.
    const Error &error() const { return std::get<Error>(m_outcome); }

private:
    std::variant<T, Error> m_outcome;
};

/// The outcome of an operation that has nothing to answer but whether it worked.
template <> class [[nodiscard]] Result<void>
{
public:
    Result() = default;
    Result(Error error) : m_error(std::move(error)) {} // NOLINT(google-explicit-constructor)

    explicit operator bool() const { return !m_error.has_value(); }
    const Error &error() const { return *m_error; }

private:
    std::optional<Error> m_error;
};

} // namespace inkory
