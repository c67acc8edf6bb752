#include "PlaylistWarnings.h"

#include "M3UContent.h"
#include "RockboxGenerator.h"

namespace kestrune {

QString warningKindName(PlaylistWarning::Kind kind)
{
    switch (kind) {
    case PlaylistWarning::Kind::overLimit:
        return QStringLiteral("overLimit");
    case PlaylistWarning::Kind::longPaths:
        return QStringLiteral("longPaths");
    case PlaylistWarning::Kind::longFileName:
        return QStringLiteral("longFileName");
    case PlaylistWarning::Kind::missingFiles:
        return QStringLiteral("missingFiles");
    }
    return {};
}

QList<PlaylistWarning> playlistWarnings(const Playlist &playlist, const ConversionOptions &options,
                                        int playlistLimit, DeviceFileIndex *deviceFiles)
{
    QList<PlaylistWarning> warnings;
    const auto warn = [&](PlaylistWarning::Kind kind, int count, int limit) {
        if (count > 0)
            warnings.append(PlaylistWarning{playlist.name, kind, count, limit});
    };
    const int entries = int(playlist.tracks.size());
    warn(PlaylistWarning::Kind::overLimit, entries > playlistLimit ? entries : 0, playlistLimit);

    int longPaths = 0;
    int missing = 0;
    for (const Track &track : playlist.tracks) {
        if (m3uPathLine(track, options.customPathPrefix).toUtf8().size() > playerPathLimitBytes)
            ++longPaths;
        if (deviceFiles && !deviceFiles->contains(track.rockboxPath()))
            ++missing;
    }
    warn(PlaylistWarning::Kind::longPaths, longPaths, playerPathLimitBytes);
    const QString playerPath =
        QStringLiteral("/Playlists/") + RockboxGenerator::playlistFilename(playlist, options);
    warn(PlaylistWarning::Kind::longFileName, playerPath.toUtf8().size() > playerPathLimitBytes ? 1 : 0,
         playerPathLimitBytes);
    warn(PlaylistWarning::Kind::missingFiles, missing, 0);
    return warnings;
}

QList<Playlist> splitToLimit(const Playlist &playlist, int limit)
{
    if (limit <= 0 || playlist.tracks.size() <= limit)
        return {playlist};
    const qsizetype parts = (playlist.tracks.size() + limit - 1) / limit;
    QList<Playlist> split;
    for (qsizetype part = 0; part < parts; ++part) {
        Playlist piece = playlist;
        piece.name = QStringLiteral("%1 (%2 of %3)").arg(playlist.name).arg(part + 1).arg(parts);
        piece.tracks = playlist.tracks.mid(part * limit, limit);
        piece.trackIds.clear();
        for (const Track &track : std::as_const(piece.tracks))
            piece.trackIds.append(track.id);
        piece.existingRockboxFile.reset();
        split.append(std::move(piece));
    }
    return split;
}

} // namespace kestrune
