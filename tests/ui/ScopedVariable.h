#pragma once

#include <QByteArray>

#include <string>

namespace tw::test {

/// An environment variable with another value for a while. Not while other threads may read the environment.
class ScopedVariable {
public:
    ScopedVariable(char const *variable, std::string const &value) : name(variable), before(qgetenv(variable))
    {
        qputenv(name, QByteArray::fromStdString(value));
    }

    ~ScopedVariable()
    {
        if (before.isNull())
            qunsetenv(name);
        else
            qputenv(name, before);
    }

    ScopedVariable(ScopedVariable const &) = delete;
    ScopedVariable &operator=(ScopedVariable const &) = delete;

private:
    char const *const name;
    QByteArray const before;
};

} // namespace tw::test
