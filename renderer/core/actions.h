// Installation of the action slots.
#pragma once

namespace krb {

class Software_Z_Buffer;

// Fills every slot that the renderer serves with the member for its current options. Slots that the case at hand does not name
// keep what they hold.
void install_actions(Software_Z_Buffer& renderer);

} // namespace krb
