#include "platform/user_defaults.h"

#include "platform/file_error.h"
#include "platform/paths.h"

#include <QFile>
#include <QSettings>
#include <QStringList>
#include <QVariant>

namespace framewright {

namespace {

QString qtPath(std::filesystem::path const& file)
{
    return QFile::decodeName(file.c_str());
}

std::optional<QVariant> stored(std::filesystem::path const& file, std::string const& key)
{
    QSettings const settings(qtPath(file), QSettings::IniFormat);
    QString const name = QString::fromStdString(key);
    if (!settings.contains(name))
        return std::nullopt;
    return settings.value(name);
}

/// Applies `change` to the settings of a file and writes them to disk.
template <class Change>
void edit(std::filesystem::path const& file, Change const& change)
{
    ensureFolder(file.parent_path());
    QSettings settings(qtPath(file), QSettings::IniFormat);
    if (settings.status() == QSettings::FormatError)
        throw FileError(FileError::Cause::notRegular, file, "written", "it is not a settings file");
    change(settings);
    settings.sync();
    if (settings.status() != QSettings::NoError)
        throw FileError(FileError::Cause::unwritable, file, "written",
                        "no settings can be stored there");
}

void store(std::filesystem::path const& file, std::string const& key, QVariant const& value)
{
    edit(file, [&](QSettings& settings) { settings.setValue(QString::fromStdString(key), value); });
}

} // namespace

UserDefaults UserDefaults::ofUser()
{
    return UserDefaults(configFolder() / "Framewright.ini");
}

UserDefaults::UserDefaults(std::filesystem::path file) : m_file(std::move(file)) {}

std::optional<std::string> UserDefaults::string(std::string const& key) const
{
    auto const value = stored(m_file, key);
    if (!value || !value->isValid())
        return std::nullopt;
    // The file does not distinguish a text from a list of one.
    if (value->typeId() == QMetaType::QStringList)
        return value->toStringList().size() == 1
                   ? std::optional(value->toStringList().first().toStdString())
                   : std::nullopt;
    return value->toString().toStdString();
}

std::optional<std::vector<std::string>> UserDefaults::strings(std::string const& key) const
{
    auto const value = stored(m_file, key);
    if (!value)
        return std::nullopt;
    std::vector<std::string> texts; // An empty list is stored as an invalid value.
    for (QString const& text : value->toStringList())
        texts.push_back(text.toStdString());
    return texts;
}

std::optional<double> UserDefaults::number(std::string const& key) const
{
    auto const value = stored(m_file, key);
    bool isNumber = false;
    double const number = value ? value->toDouble(&isNumber) : 0;
    return isNumber ? std::optional(number) : std::nullopt;
}

std::optional<bool> UserDefaults::flag(std::string const& key) const
{
    auto const text = string(key);
    if (text == "true")
        return true;
    if (text == "false")
        return false;
    return std::nullopt;
}

void UserDefaults::setString(std::string const& key, std::string const& value)
{
    store(m_file, key, QString::fromStdString(value));
}

void UserDefaults::setStrings(std::string const& key, std::vector<std::string> const& values)
{
    QStringList texts;
    for (std::string const& value : values)
        texts.append(QString::fromStdString(value));
    store(m_file, key, texts);
}

void UserDefaults::setNumber(std::string const& key, double value)
{
    store(m_file, key, value);
}

void UserDefaults::setFlag(std::string const& key, bool value)
{
    // As a word: a bool would read back from the file as a string.
    setString(key, value ? "true" : "false");
}

void UserDefaults::remove(std::string const& key)
{
    edit(m_file, [&](QSettings& settings) { settings.remove(QString::fromStdString(key)); });
}

} // namespace framewright
