#include "ParseError.h"

namespace kestrune {

QString ParseError::errorDescription() const
{
    switch (m_kind) {
    case Kind::readFailed:
        return QStringLiteral("Errore durante la lettura del database: ") + m_detail;
    case Kind::invalidHeader:
        return QStringLiteral("File non valido: intestazione iTunesDB ('mhbd') mancante o corrotta.");
    case Kind::fileTooSmall:
        return QStringLiteral("Il file database è troppo piccolo o incompleto.");
    }
    Q_UNREACHABLE();
    return {};
}

} // namespace kestrune
