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

    // Each returns false once the budget is spent; from then on every walk stops. Inline, as the parser
    // spends for every chunk it reads.
    bool spendIteration() { return spend(m_spent.iterations, m_limits.iterations, 1); }
    bool spendChunk() { return spend(m_spent.chunks, m_limits.chunks, 1); }
    bool spendDecodedBytes(qsizetype count) { return spend(m_spent.decodedBytes, m_limits.decodedBytes, count); }

    [[nodiscard]] const ParseWork &spent() const { return m_spent; }

    // Hands half of what is left to a budget of its own, for work done on another thread; together the two
    // never spend more than this one could have.
    [[nodiscard]] ParseBudget split();
    // Takes back a split budget: its limits and what it spent.
    void absorb(const ParseBudget &split);

private:
    ParseBudget() = default;
    bool spend(qint64 &counter, qint64 limit, qint64 amount)
    {
        if (m_exhausted || amount > limit - counter) {
            m_exhausted = true;
            m_spent.capped = true;
            return false;
        }
        counter += amount;
        return true;
    }

    ParseWork m_limits;
    ParseWork m_spent;
    bool m_exhausted = false;
};

} // namespace kestrune
