#include "sync/content_mark.h"

#include <QCryptographicHash>

namespace framewright {

ContentMark contentMark(std::string_view bytes)
{
    auto const hash =
        QCryptographicHash::hash(QByteArrayView(bytes.data(), static_cast<qsizetype>(bytes.size())),
                                 QCryptographicHash::Blake2b_256);
    return hash.toStdString();
}

} // namespace framewright
