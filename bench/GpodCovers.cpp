// kestrune-gpod-covers: checks the covers against libgpod, an independent writer and reader of the
// artwork database. For an iPod Video and a Classic, libgpod writes a library with covers (source pictures
// of several shapes, an album whose tracks share a picture, a compilation without an album artist);
// Kestrune then reads that iPod and writes its covers, and each cover is compared with the pixels
// libgpod itself decodes for the track's largest thumbnail: same size, within JPEG tolerance, baseline,
// under the name Rockbox looks up. Built only where libgpod is installed; prints one line per iPod and
// exits 1 on any difference.
#include "core/ArtworkLibrary.h"
#include "core/ITunesDBParser.h"
#include "export/CoverNames.h"
#include "export/CoverRun.h"
#include "imaging/JpegCodec.h"

#include <QDir>
#include <QFile>
#include <QTemporaryDir>
#include <QUrl>

#include <gdk-pixbuf/gdk-pixbuf.h>
#include <gpod/itdb.h>

#include <cstdio>
#include <cstdlib>

using namespace kestrune;

namespace {

struct SourceTrack {
    const char *title;
    const char *artist;
    const char *albumArtist;
    const char *album;
    int width;
    int height;
    int seed;
};

// Two tracks of "Open Roads" share a picture (one image on a Classic, which shares them); the compilation
// has no album artist, so each of its artists gets a file of its own.
constexpr SourceTrack tracks[] = {
    {"Northbound", "The Lanterns", "", "Open Roads", 500, 500, 1},
    {"Desert Lights", "The Lanterns", "", "Open Roads", 500, 500, 1},
    {"Wide", "Marla Quinn", "", "Weather: Reports?", 300, 200, 2},
    {"Tall", "Orchestra Ventura", "", "Piazza \"Grande\"", 200, 300, 3},
    {"Small", "Kumo", "Kumo & Friends", "Night Trains ☆", 64, 64, 4},
    {"One", "Singer A", "", "Hits Vol. 1", 400, 400, 5},
    {"Two", "Singer B", "", "Hits Vol. 1", 400, 400, 6},
};

GdkPixbuf *sourcePicture(const SourceTrack &track)
{
    GdkPixbuf *picture = gdk_pixbuf_new(GDK_COLORSPACE_RGB, FALSE, 8, track.width, track.height);
    guchar *pixels = gdk_pixbuf_get_pixels(picture);
    const int stride = gdk_pixbuf_get_rowstride(picture);
    for (int y = 0; y < track.height; ++y) {
        for (int x = 0; x < track.width; ++x) {
            guchar *pixel = pixels + y * stride + x * 3;
            // Gradients with a disc of another colour: smooth areas and one hard edge, as a cover has.
            const int dx = x - track.width / 2;
            const int dy = y - track.height / 3;
            const bool disc = dx * dx + dy * dy < track.width * track.height / 16;
            pixel[0] = guchar(disc ? 230 : (x * 255 / track.width + track.seed * 50) % 256);
            pixel[1] = guchar(disc ? 200 - track.seed * 20 : y * 255 / track.height);
            pixel[2] = guchar(disc ? 40 : (x + y) * 128 / (track.width + track.height) + track.seed * 15);
        }
    }
    return picture;
}

bool writeWithLibgpod(const QString &root, const char *model)
{
    // A Classic's database carries a checksum made from the iPod's FireWire id, which libgpod reads here.
    QDir().mkpath(root + QStringLiteral("/iPod_Control/Device"));
    QFile sysInfo(root + QStringLiteral("/iPod_Control/Device/SysInfo"));
    if (!sysInfo.open(QIODevice::WriteOnly) || sysInfo.write(QByteArray("ModelNumStr: x") + (model + 1) + "\nFirewireGuid: 0x000A2700138C9A4B\n") < 0)
        return false;
    sysInfo.close();
    GError *error = nullptr;
    if (!itdb_init_ipod(qPrintable(root), model, "Kestrune test", &error)) {
        std::fprintf(stderr, "libgpod cannot make a %s: %s\n", model, error ? error->message : "?");
        return false;
    }
    Itdb_iTunesDB *database = itdb_parse(qPrintable(root), &error);
    if (!database)
        return false;
    Itdb_Playlist *master = itdb_playlist_mpl(database);
    int number = 0;
    for (const SourceTrack &source : tracks) {
        Itdb_Track *track = itdb_track_new();
        track->title = g_strdup(source.title);
        track->artist = g_strdup(source.artist);
        track->album = g_strdup(source.album);
        if (*source.albumArtist)
            track->albumartist = g_strdup(source.albumArtist);
        track->ipod_path = g_strdup_printf(":iPod_Control:Music:F%02d:T%03d.mp3", number % 50, number);
        track->filetype = g_strdup("MPEG audio file");
        track->tracklen = 200000;
        ++number;
        GdkPixbuf *picture = sourcePicture(source);
        if (!itdb_track_set_thumbnails_from_pixbuf(track, picture))
            return false;
        g_object_unref(picture);
        itdb_track_add(database, track, -1);
        itdb_playlist_add_track(master, track, -1);
    }
    const bool written = itdb_write(database, &error);
    if (!written)
        std::fprintf(stderr, "libgpod cannot write: %s\n", error ? error->message : "?");
    itdb_free(database);
    return written;
}

struct Comparison {
    int covers = 0;
    int identicalDecodings = 0; // thumbnails Kestrune decodes to exactly libgpod's pixels
    double worstMeanError = 0;
    QStringList problems;
};

// Whether Kestrune's own decoding of the track's thumbnail, before any JPEG, is libgpod's to the bit.
bool decodesIdentically(const ArtworkLibrary &artwork, const Track &track, GdkPixbuf *expected)
{
    const ArtworkImage *image = artwork.database().imageFor(track.dbId(), track.artworkId());
    const auto frame = image ? artwork.frameOf(*image) : std::variant<ArtworkLibrary::Frame, QString>(QString());
    const auto *found = std::get_if<ArtworkLibrary::Frame>(&frame);
    const std::optional<RgbPicture> picture = found ? decodeThumbnail(found->bytes, found->format, found->area) : std::nullopt;
    if (!picture || picture->width != gdk_pixbuf_get_width(expected) || picture->height != gdk_pixbuf_get_height(expected))
        return false;
    for (int y = 0; y < picture->height; ++y) {
        const guchar *row = gdk_pixbuf_get_pixels(expected) + y * gdk_pixbuf_get_rowstride(expected);
        for (int x = 0; x < picture->width; ++x) {
            for (int c = 0; c < 3; ++c) {
                if (row[x * gdk_pixbuf_get_n_channels(expected) + c] != uchar(picture->rgb.at((y * picture->width + x) * 3 + c)))
                    return false;
            }
        }
    }
    return true;
}

Comparison compare(const QString &root, const ArtworkLibrary &artwork, const QList<Track> &library)
{
    Comparison comparison;
    GError *error = nullptr;
    Itdb_iTunesDB *database = itdb_parse(qPrintable(root), &error);
    for (GList *item = database ? database->tracks : nullptr; item; item = item->next) {
        auto *track = static_cast<Itdb_Track *>(item->data);
        const CoverNaming naming = coverNameFor(Track({.artist = QString::fromUtf8(track->artist),
                                                       .album = QString::fromUtf8(track->album),
                                                       .albumArtist = QString::fromUtf8(track->albumartist)}));
        const QString file = root + QStringLiteral("/.rockbox/albumart/") + naming.name + QStringLiteral(".jpg");
        QFile jpeg(file);
        auto *expected = static_cast<GdkPixbuf *>(itdb_artwork_get_pixbuf(database->device, track->artwork, -1, -1));
        if (!expected || !jpeg.open(QIODevice::ReadOnly)) {
            comparison.problems << QStringLiteral("%1: %2").arg(QString::fromUtf8(track->title), expected ? "no file " + file : "libgpod has no cover");
            continue;
        }
        for (const Track &ours : library) {
            if (ours.title() == QString::fromUtf8(track->title) && decodesIdentically(artwork, ours, expected))
                ++comparison.identicalDecodings;
        }
        const QByteArray bytes = jpeg.readAll();
        const std::optional<RgbPicture> decoded = decodeJpeg(bytes);
        const int width = gdk_pixbuf_get_width(expected);
        const int height = gdk_pixbuf_get_height(expected);
        if (!isBaselineJpeg(bytes) || !decoded || decoded->width != width || decoded->height != height) {
            comparison.problems << QStringLiteral("%1: %2x%3 against libgpod's %4x%5")
                                       .arg(naming.name).arg(decoded ? decoded->width : 0).arg(decoded ? decoded->height : 0)
                                       .arg(width).arg(height);
            continue;
        }
        const guchar *pixels = gdk_pixbuf_get_pixels(expected);
        const int stride = gdk_pixbuf_get_rowstride(expected);
        const int channels = gdk_pixbuf_get_n_channels(expected);
        double difference = 0;
        for (int y = 0; y < height; ++y) {
            for (int x = 0; x < width; ++x) {
                for (int c = 0; c < 3; ++c)
                    difference += std::abs(int(pixels[y * stride + x * channels + c]) - int(uchar(decoded->rgb.at((y * width + x) * 3 + c))));
            }
        }
        const double mean = difference / (double(width) * height * 3);
        comparison.worstMeanError = std::max(comparison.worstMeanError, mean);
        if (mean > 2.5)
            comparison.problems << QStringLiteral("%1: mean difference %2").arg(naming.name).arg(mean);
        ++comparison.covers;
        g_object_unref(expected);
    }
    if (database)
        itdb_free(database);
    return comparison;
}

} // namespace

int main()
{
    int status = 0;
    for (const auto &[name, model] : {std::pair{"iPod Video", "MA450"}, std::pair{"iPod Classic", "MB029"}}) {
        QTemporaryDir dir;
        const QString root = dir.path();
        if (!writeWithLibgpod(root, model))
            return 1;
        QDir().mkpath(root + QStringLiteral("/.rockbox"));
        const ParseResult library = ITunesDBParser().parse(QUrl::fromLocalFile(root + QStringLiteral("/iPod_Control/iTunes/iTunesDB")));
        const ArtworkLibrary artwork = ArtworkLibrary::open(root);
        const CoverRunReport report = runCovers(DeviceFolder::open(root), artwork, {.tracks = library.tracksInOrder()});
        const Comparison comparison = compare(root, artwork, library.tracksInOrder());
        const int count = int(std::size(tracks));
        const bool same = comparison.problems.isEmpty() && !report.failed() && comparison.covers == count &&
                          comparison.identicalDecodings == count;
        std::printf("%-13s format %u: %d of %d thumbnails decoded exactly as libgpod decodes them; %d of %d covers match that "
                    "within JPEG tolerance (worst mean difference %.2f of 255); %lld files, %lld images%s\n",
                    name, artwork.format().id, comparison.identicalDecodings, count, comparison.covers, count, comparison.worstMeanError,
                    report.count(CoverResult::Outcome::written), artwork.database().images.size(),
                    same ? "" : qPrintable(QStringLiteral(": ") + comparison.problems.join(QStringLiteral("; "))));
        status |= same ? 0 : 1;
    }
    return status;
}
