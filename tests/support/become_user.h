#pragma once

namespace QuaskTesting {

// Puts this process, which has no other threads, into a user namespace where it is of user and
// group `id`. It keeps its rights on files, and can do in the namespace what root can. False where
// the system does not allow it.
bool enterUserNamespace(unsigned id);

// Makes this process, which has no other threads, one of user and group `id`. Root becomes another
// user. Where that is not allowed, the user only has another number, in a user namespace, and
// processes outside that namespace are another user's. False where the system allows neither.
bool becomeUser(unsigned id);

}  // namespace QuaskTesting
