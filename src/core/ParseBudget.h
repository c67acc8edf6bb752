#pragma once

#include <QtGlobal>

namespace kestrune {

// How much work one parse did: loop iterations (re-synchronisation steps included), chunks whose
// header was read, and string bytes handed to the decoders.
struct ParseWork {
    qint64 iterations = 0;
    qint64 chunks = 0;
    qint64 decodedBytes = 0;
    bool capped = false; // a limit was reached and the walks stopped early

    bool operator==(const ParseWork &) const = default;
};

// Bounds the work of one parse to O(n) for n input bytes. A crafted file can make the walks revisit the
// same bytes (many sections pointing at one track list, strings pointing into one shared region); a
// well-formed file, where every chunk occupies bytes of its own, never comes near the limits.
class ParseBudget {
public:
    explicit ParseBudget(qsizetype inputSize);

    static ParseWork limitsFor(qsizetype inputSize);

    // Each returns false once the budget is spent; from then on every walk stops.
    bool spendIteration();
    bool spendChunk();
    bool spendDecodedBytes(qsizetype count);

    [[nodiscard]] const ParseWork &spent() const { return m_spent; }

private:
    bool spend(qint64 &counter, qint64 limit, qint64 amount);

    ParseWork m_limits;
    ParseWork m_spent;
    bool m_exhausted = false;
};

} // namespace kestrune
