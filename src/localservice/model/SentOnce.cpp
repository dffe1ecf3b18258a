#include "localservice/model/SentOnce.h"

#include <algorithm>

namespace quillmate::localservice
{

qint64 SentOnce::readData(char* data, qint64 maxSize)
{
    if (m_rest.isEmpty()) {
        return -1; // -1 is the end; 0 would only mean that there is nothing yet.
    }
    const qsizetype count = std::min<qsizetype>(maxSize, m_rest.size());
    std::copy_n(m_rest.cbegin(), count, data);
    m_rest.remove(0, count);
    return count;
}

} // namespace quillmate::localservice
