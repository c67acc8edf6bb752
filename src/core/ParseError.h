#pragma once

#include <QString>

namespace kestrune {

// The one error the database parser raises. Its texts are fixed Italian, whatever the interface language.
class ParseError {
public:
    enum class Kind { readFailed, invalidHeader, fileTooSmall };

    static ParseError readFailed(const QString &detail) { return ParseError(Kind::readFailed, detail); }
    static ParseError invalidHeader() { return ParseError(Kind::invalidHeader); }
    static ParseError fileTooSmall() { return ParseError(Kind::fileTooSmall); }

    [[nodiscard]] Kind kind() const { return m_kind; }
    [[nodiscard]] QString detail() const { return m_detail; }
    [[nodiscard]] QString errorDescription() const;

    bool operator==(const ParseError &) const = default;

private:
    explicit ParseError(Kind kind, QString detail = {}) : m_kind(kind), m_detail(std::move(detail)) {}

    Kind m_kind;
    QString m_detail;
};

} // namespace kestrune
