#include "InterfaceTexts.h"

#include "ExtraTexts.h"
#include "LocalizationManager.h"

namespace kestrune {

namespace {

L10n::Key payloadKey(L10n::KeyId id, int count, const QString &text)
{
    switch (id) {
    case L10n::KeyId::applyChangesButton:
        return L10n::Key::applyChangesButton(count);
    case L10n::KeyId::totalCount:
        return L10n::Key::totalCount(count);
    case L10n::KeyId::selectAll:
        return L10n::Key::selectAll(count);
    case L10n::KeyId::deleteMultiple:
        return L10n::Key::deleteMultiple(count);
    case L10n::KeyId::pendingDeleteBanner:
        return L10n::Key::pendingDeleteBanner(count);
    case L10n::KeyId::tracksCount:
        return L10n::Key::tracksCount(count);
    case L10n::KeyId::tracksAndDuration:
        return L10n::Key::tracksAndDuration(count, text);
    case L10n::KeyId::convertingProgress:
        return L10n::Key::convertingProgress(count);
    default:
        return L10n::Key::saveAndExport(count);
    }
}

} // namespace

InterfaceTexts::InterfaceTexts(LocalizationManager &manager, QObject *parent)
    : QObject(parent), m_manager(manager)
{
    rebuild();
    connect(&m_manager, &LocalizationManager::currentLanguageChanged, this, [this] {
        rebuild();
        Q_EMIT languageChanged();
    });
}

QString InterfaceTexts::languageCode() const
{
    return rawValue(m_manager.currentLanguage());
}

QVariantList InterfaceTexts::languages() const
{
    QVariantList list;
    for (AppLanguage language : allAppLanguages()) {
        list.append(QVariantMap{{QStringLiteral("code"), rawValue(language)},
                                {QStringLiteral("flag"), flag(language)},
                                {QStringLiteral("displayName"), displayName(language)}});
    }
    return list;
}

void InterfaceTexts::setLanguage(const QString &code)
{
    if (const std::optional<AppLanguage> language = appLanguageFromRawValue(code))
        m_manager.setLanguage(*language);
}

QString InterfaceTexts::format(const QString &languageCode, const QString &key, int count,
                               const QString &text) const
{
    const AppLanguage language = appLanguageFromRawValue(languageCode).value_or(AppLanguage::english);
    if (const std::optional<QString> extra = ExtraTexts::text(key, language)) {
        QString filled = extra->contains(QLatin1StringView("%1")) ? extra->arg(count) : *extra;
        return filled.contains(QLatin1StringView("%2")) ? filled.arg(text) : filled;
    }
    const std::optional<L10n::KeyId> id = L10n::keyFromName(key);
    if (!id)
        return key;
    if (!L10n::hasPayload(*id)) // a plain text in a language of the caller's choosing
        return L10n::Key(*id).translation(language);
    return payloadKey(*id, count, text).translation(language);
}

void InterfaceTexts::rebuild()
{
    m_texts.clear();
    const AppLanguage language = m_manager.currentLanguage();
    for (int value = L10n::payloadKeyCount; value < L10n::keyCount; ++value) {
        const auto id = L10n::KeyId(value);
        m_texts.insert(L10n::keyName(id), L10n::Key(id).translation(language));
    }
    for (const QString &name : ExtraTexts::names())
        m_texts.insert(name, *ExtraTexts::text(name, language));
}

} // namespace kestrune
