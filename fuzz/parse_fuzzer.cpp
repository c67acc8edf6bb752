// Feeds arbitrary bytes to the database parser: it must return a result or a ParseError, never crash,
// and never spend more than its work limits.
#include "core/ITunesDBParser.h"
#include "core/ParseError.h"

#include <cstdint>
#include <cstdlib>

using namespace kestrune;

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size)
{
    const QByteArray bytes(reinterpret_cast<const char *>(data), qsizetype(size));
    try {
        ParseWork work;
        const ParseResult result = ITunesDBParser().parse(bytes, &work);
        const ParseWork limits = ParseBudget::limitsFor(bytes.size());
        if (work.iterations > limits.iterations || work.chunks > limits.chunks ||
            work.decodedBytes > limits.decodedBytes)
            std::abort();
        for (const Playlist &playlist : result.playlists) {
            if (playlist.name.isEmpty() || playlist.tracks.size() > playlist.trackIds.size())
                std::abort();
        }
    } catch (const ParseError &) {
    }
    return 0;
}
