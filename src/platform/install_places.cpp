#include "platform/install_places.h"

namespace quill::platform {

const char SettingsPlace[] = QUILL_SETTINGS_DIR;
const char DataPlace[] = QUILL_DATA_DIR;

}  // namespace quill::platform
