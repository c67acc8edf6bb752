#include "Help.h"

#include <QStringList>

#include <array>

namespace kestrune::cli {

namespace {

struct CommandHelp {
    const char *name;
    const char *synopsis;
    const char *summary;
    const char *options; // one "  --option   meaning" line each, or empty
};

const std::array<CommandHelp, 10> commands{{
    {"playlists", "playlists SOURCE [--on-the-go] [--json]",
     "List the playlists in database order, with the file each matches in SOURCE/Playlists, their folders,\n"
     "and warnings about entries the player will not play.",
     "  --on-the-go         also list the On-The-Go playlists made on the iPod since the last sync\n"},
    {"tracks", "tracks SOURCE [--playlist NAME] [--json]", "List every track, or one playlist's tracks.",
     "  --playlist NAME     only this playlist's tracks, in its order\n"},
    {"convert", "convert SOURCE [options]",
     "Write the playlists as Rockbox playlist files into SOURCE/Playlists, then remove macOS dot files\n"
     "there when it lies on an iPod.",
     "  --dest DIR          write into DIR instead of SOURCE/Playlists (its parent must exist)\n"
     "  --playlist NAME     export this playlist (repeatable; default: every non-master playlist)\n"
     "  --include-master    also export the master playlist\n"
     "  --m3u               use the .m3u extension instead of .m3u8\n"
     "  --no-extinf         write bare paths, without #EXTINF lines\n"
     "  --prefix TEXT       put TEXT in front of every track path (no control characters)\n"
     "  --no-sanitize       keep the names as they are (control characters are still refused)\n"
     "  --no-clean          leave macOS dot files in place afterwards\n"
     "  --force             overwrite existing playlists even from a database that looks truncated\n"
     "  --split-long        write a playlist longer than the player keeps as \"Name (1 of 3)\", ...\n"
     "  --folders flatten   skip folder playlists and name the others \"Folder - Child\"\n"
     "  --on-the-go         also export the On-The-Go playlists made on the iPod\n"
     "  --mirror            then remove the files Kestrune wrote for playlists no longer exported (deleted\n"
     "                      or renamed in iTunes); never a file it did not write, one edited since, or an\n"
     "                      On-The-Go playlist's; needs the device's .rockbox folder\n"
     "  --dry-run           say what would be written and removed, change nothing\n"
     "  --json              print the results as JSON\n"},
    {"sync", "sync SOURCE [options]",
     "What to run after each iTunes sync, with one lock and one summary: convert every playlist with\n"
     "--mirror, then write the play counts and ratings to .rockbox/database_changelog.txt when there are\n"
     "any (replacing one Kestrune wrote, never one the player exported), then write the covers as\n"
     "'art --mirror' does. A step that does not apply is said and is no failure; the exit status is the\n"
     "worst of the steps.",
     "  --m3u, --no-extinf, --prefix TEXT, --on-the-go, --folders flatten, --split-long\n"
     "                      as for convert\n"
     "  --dry-run           say what would be written and removed, change nothing\n"
     "  --json              one JSON object with a section per step\n"},
    {"art", "art SOURCE [--dry-run] [--size WxH] [--mirror] [--force] [--json]",
     "Write the covers iTunes put on the iPod (its artwork database) where Rockbox looks them up:\n"
     "SOURCE/.rockbox/albumart/ARTIST-ALBUM.jpg, ARTIST being the album artist, else the artist, with\n"
     "\" made ' and * / : < > ? \\ | made _ as the player does. One baseline JPEG per name, at the largest\n"
     "size the iPod stores; Rockbox scales it for the now-playing screen and PictureFlow. By default\n"
     "Rockbox still prefers a cover embedded in the music file (Settings > Theme Settings > Album Art).\n"
     "A device without covers or without a .rockbox folder is said in one line, and nothing is written.",
     "  --size WxH          also write ARTIST-ALBUM.WxH.jpg, the variant Rockbox tries first for a theme\n"
     "                      whose cover box is that size (120x120 on a Video or a Classic)\n"
     "  --mirror            remove the covers Kestrune wrote that no track needs any more\n"
     "  --force             replace cover files Kestrune did not write, or that were edited since\n"
     "  --dry-run           say what would be written and removed, change nothing\n"
     "  --json              print the results as JSON\n"},
    {"files", "files DIR [--json]", "List the playlist files in a folder, sorted as a file browser sorts them.",
     ""},
    {"clean", "clean DIR",
     "Remove macOS dot files below DIR, which must lie on an iPod (DIR or a folder above it holds\n"
     "iPod_Control); .rockbox is kept, links are not followed and other mounted volumes not entered.",
     ""},
    {"check", "check SOURCE [--json]",
     "Report how the device's playlist files will play: entries whose file is missing, entries too long\n"
     "for the player, entries past its playlist limit; also library playlists without a file, macOS dot\n"
     "files and a FAT volume mounted without UTF-8 names. Exit 1 when some entry will not play.",
     ""},
    {"stats", "stats SOURCE [--write [--force]] [--json]",
     "Summarise the play counts and ratings the iPod keeps (with the plays since the last sync). With\n"
     "--write, put them in .rockbox/database_changelog.txt on the device, for the player's Database >\n"
     "Import Modifications; tracks whose file is not on the device are left out.",
     "  --write             write the changelog on the device\n"
     "  --force             replace a changelog already there (Rockbox writes one on Export "
     "Modifications)\n"},
    {"devices", "devices [--volumes DIR] [--json]",
     "List the iPods among the mounted volumes (or among the entries of DIR).",
     "  --volumes DIR       look among the entries of DIR instead\n"},
}};

const char *const preamble = "Usage: kestrune-cli COMMAND [ARGS]\n\n"
                             "Turns the playlists of an iPod's iTunesDB into Rockbox playlist files.\n"
                             "SOURCE is an iPod root or backup folder (holding iPod_Control/iTunes/iTunesDB or "
                             "iTunesSD), or a database file.\n";

const char *const exitStatus =
    "Exit status: 0 success, 1 something failed (a playlist, a removal) or the device is busy with another\n"
    "run, 2 usage error or unreadable database, 128 + N when signal N (Ctrl+C: 130) stopped a run; what was\n"
    "not yet in place is then left as it was. With --json, errors are JSON objects on standard output.\n";

} // namespace

QString usageText()
{
    QString text = QString::fromUtf8(preamble) + QStringLiteral("\nCommands:\n");
    for (const CommandHelp &command : commands)
        text += QStringLiteral("  %1\n").arg(QString::fromUtf8(command.synopsis));
    text += QStringLiteral("\n'kestrune-cli COMMAND --help' describes a command and its options.\n") +
            QString::fromUtf8(exitStatus);
    return text;
}

std::optional<QString> commandHelpText(const QString &name)
{
    for (const CommandHelp &command : commands) {
        if (name == QLatin1StringView(command.name)) {
            QString text = QStringLiteral("Usage: kestrune-cli %1\n\n%2\n")
                               .arg(QString::fromUtf8(command.synopsis), QString::fromUtf8(command.summary));
            if (*command.options)
                text += QStringLiteral("\nOptions:\n") + QString::fromUtf8(command.options);
            return text + u'\n' + QString::fromUtf8(exitStatus);
        }
    }
    return std::nullopt;
}

} // namespace kestrune::cli
