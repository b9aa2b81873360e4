// The enumeration decoders that the library defines for the user and
// scheduler services: each writes a token setting's numeric code.
#include <qel/platform/streams.h>
#include <qel/platform/user.h>

namespace services {
namespace user {

void Preferences::decodeOutputType(utility::PutStream &out, unsigned int token) {
  out.PutF("%ld", OutputTypeToNumeric(token));
}

void Preferences::decodeOutputMode(utility::PutStream &out, unsigned int token) {
  out.PutF("%ld", OutputModeToNumeric(token));
}

void Preferences::decodeStorageUnit(utility::PutStream &out, unsigned int token) {
  out.PutF("%ld", StorageUnitToNumeric(token));
}

void Preferences::decodeTemperature(utility::PutStream &out, unsigned int token) {
  out.PutF("%ld", TemperatureToNumeric(token));
}

void User::decodeExperience(utility::PutStream &out, unsigned int token) {
  out.PutF("%ld", ExperienceToNumeric(token));
}

} // namespace user

namespace scheduler {

void TaskRepVol::decodeSnapMode(utility::PutStream &out, unsigned int token) {
  out.PutF("%ld", SnapModeToNumeric(token));
}

} // namespace scheduler
} // namespace services
