#include "server/sessions/FixSessionStore.h"

namespace zan {
namespace server {

FixSessionStore::~FixSessionStore() = default;

} // namespace server
} // namespace zan
