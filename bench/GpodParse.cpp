// kestrune-gpod-parse: the reference reader's side of the command-line figures, built only where libgpod is
// installed. "FILE" parses FILE as libgpod does and prints what it found; "--rewrite IN OUT" writes the
// database IN again as libgpod writes one, so that both readers can be timed on a file libgpod made.
#include <gpod/itdb.h>

#include <cstdio>
#include <cstring>

int main(int argc, char *argv[])
{
    const bool rewrite = argc == 4 && std::strcmp(argv[1], "--rewrite") == 0;
    if (argc != 2 && !rewrite) {
        std::fprintf(stderr, "usage: kestrune-gpod-parse FILE | --rewrite IN OUT\n");
        return 2;
    }
    GError *error = nullptr;
    Itdb_iTunesDB *database = itdb_parse_file(argv[rewrite ? 2 : 1], &error);
    if (!database) {
        std::fprintf(stderr, "libgpod: %s\n", error ? error->message : "cannot parse");
        return 1;
    }
    if (rewrite && !itdb_write_file(database, argv[3], &error)) {
        std::fprintf(stderr, "libgpod: %s\n", error ? error->message : "cannot write");
        return 1;
    }
    std::printf("%u tracks, %u playlists\n", itdb_tracks_number(database), itdb_playlists_number(database));
    return 0; // as the command line does, the library is left to the end of the process
}
