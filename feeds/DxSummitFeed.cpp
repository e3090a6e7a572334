#include "feeds/DxSummitFeed.h"

namespace spotwell
{

void DxSummitFeed::parseDxSummitData(const QByteArray& /*body*/, bool /*dxsExclusive*/) {}

} // namespace spotwell
