// What the renderer takes from the folders above core: the members in its action slots, and their kernels.
#pragma once

#include <cstdint>

namespace krb {

struct Kernel_Set;

class Software_Z_Buffer;

// Fills every slot that the renderer serves with the member for its current options. Slots that the case at hand does not name
// keep what they hold.
void install_actions(Software_Z_Buffer& renderer);

// The kernel set of a new renderer. Throws what chosen_kernel_set throws.
const Kernel_Set& chosen_kernels();

// The chosen set, or the portable one for a window that is too narrow for it.
const Kernel_Set& kernels_for_window(const Kernel_Set& chosen, std::int32_t width) noexcept;

} // namespace krb
