#include "feeds/PotaFeed.h"

namespace spotwell
{

void PotaFeed::parsePotaData(const QByteArray& /*body*/, bool /*showSkimmers*/) {}

} // namespace spotwell
