#include "feeds/WsprnetFeed.h"

namespace spotwell
{

void WsprnetFeed::parseWsprnetData(const QByteArray& /*body*/) {}

bool WsprnetFeed::parseWsprnetLine(const QString& /*row*/)
{
    return true;
}

} // namespace spotwell
