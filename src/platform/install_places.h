// Where an installed program finds its parts: folders as paths from its own, set by the build.
#pragma once

namespace quill::platform {

// Their text stands in a source of its own and no other code depends on it, so that one record of
// how the program runs optimises it for every place.
extern const char SettingsPlace[];
extern const char DataPlace[];

}  // namespace quill::platform
