#include "PlaylistWarnings.h"

#include "M3UContent.h"
#include "RockboxGenerator.h"
#include "core/Prefetch.h"

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

PlaylistChecker::PlaylistChecker(ConversionOptions options, int playlistLimit, DeviceFileIndex *deviceFiles)
    : m_options(std::move(options)), m_prefixBytes(m_options.customPathPrefix.toUtf8().size()),
      m_playlistLimit(playlistLimit), m_deviceFiles(deviceFiles)
{
}

bool PlaylistChecker::hasLongPath(const Track &track) const
{
    // No character takes more than three bytes of UTF-8 per UTF-16 unit, and the line adds at most a slash
    // to the prefix and the path: most paths are shown short enough without reading them.
    if (m_prefixBytes + 1 + 3 * track.ipodPath().size() <= playerPathLimitBytes)
        return false;
    return m3uPathLineUtf8Size(track, m_options.customPathPrefix) > playerPathLimitBytes;
}

PlaylistChecker::Findings PlaylistChecker::findingsFor(const Track &track)
{
    Findings findings{.longPath = hasLongPath(track)};
    if (!m_deviceFiles)
        return findings;
    auto known = m_missing.find(&track.fields());
    if (known == m_missing.end())
        known = m_missing.insert(&track.fields(), !m_deviceFiles->contains(track.rockboxPath()));
    findings.missing = *known;
    return findings;
}

QList<PlaylistWarning> PlaylistChecker::warnings(const Playlist &playlist)
{
    QList<PlaylistWarning> warnings;
    const auto warn = [&](PlaylistWarning::Kind kind, int count, int limit) {
        if (count > 0)
            warnings.append(PlaylistWarning{playlist.name, kind, count, limit});
    };
    const int entries = int(playlist.tracks.size());
    warn(PlaylistWarning::Kind::overLimit, entries > m_playlistLimit ? entries : 0, m_playlistLimit);

    int longPaths = 0;
    int missing = 0;
    forEachTrackAhead(playlist.tracks, prefetchTrackPathAndDuration, [&](const Track &track) {
        const Findings findings = findingsFor(track);
        longPaths += findings.longPath ? 1 : 0;
        missing += findings.missing ? 1 : 0;
    });
    warn(PlaylistWarning::Kind::longPaths, longPaths, playerPathLimitBytes);
    const QString playerPath =
        QStringLiteral("/Playlists/") + RockboxGenerator::playlistFilename(playlist, m_options);
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
            piece.trackIds.append(track.id());
        piece.existingRockboxFile.reset();
        split.append(std::move(piece));
    }
    return split;
}

} // namespace kestrune
