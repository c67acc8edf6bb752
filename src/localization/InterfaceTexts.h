#pragma once

#include "L10n.h"

#include <QObject>
#include <QVariantMap>

namespace kestrune {

class LocalizationManager;

// The text table as bindable values for the views: every text without payload by key name, renewed and
// announced whenever the language changes, and the texts with payload through format().
class InterfaceTexts : public QObject {
    Q_OBJECT
    Q_PROPERTY(QVariantMap texts READ texts NOTIFY languageChanged)
    Q_PROPERTY(QString languageCode READ languageCode NOTIFY languageChanged)
    // Each language as {code, flag, displayName}, in the order menus show them.
    Q_PROPERTY(QVariantList languages READ languages CONSTANT)

public:
    explicit InterfaceTexts(LocalizationManager &manager, QObject *parent = nullptr);

    [[nodiscard]] QVariantMap texts() const { return m_texts; }
    [[nodiscard]] QString languageCode() const;
    [[nodiscard]] QVariantList languages() const;
    // Switches the interface language ("en" or "it"); other codes are ignored.
    Q_INVOKABLE void setLanguage(const QString &code);

    // A text by key name ("selectAll"), with its number and text where it takes them, or one of ExtraTexts. A
    // view passes languageCode so that its binding is evaluated again when the language changes, or names
    // a language of its own for texts fixed in one. An unknown key gives the key's own name.
    Q_INVOKABLE QString format(const QString &languageCode, const QString &key, int count,
                               const QString &text = QString()) const;

Q_SIGNALS:
    void languageChanged();

private:
    void rebuild();

    LocalizationManager &m_manager;
    QVariantMap m_texts;
};

} // namespace kestrune
