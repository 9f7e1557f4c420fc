// Between QString and UTF-8 in std::string. QString's own conversions are Latin-1 in Qt 4.
#ifndef OSTREL_BASE_QT_TEXT_H
#define OSTREL_BASE_QT_TEXT_H

#include <QtCore/QByteArray>
#include <QtCore/QString>

#include <stddef.h>
#include <string>

namespace ostrel {

inline std::string bytesOf(const QByteArray& bytes) {
    return std::string(bytes.constData(), static_cast<size_t>(bytes.size()));
}

inline std::string utf8Of(const QString& text) {
    return bytesOf(text.toUtf8());
}

inline QString textOf(const std::string& utf8) {
    return QString::fromUtf8(utf8.data(), static_cast<int>(utf8.size()));
}

} // namespace ostrel

#endif
