// The test that chooses between the NT and the 9x variant of an operation.
#pragma once

namespace vok {

enum OsFamily : int {
    family9x = 1,
    familyNT50 = 2,
    familyNT51 = 3,  // 5.1 and later 5.x
    familyNT4 = 4,   // before 5.0
    familyNT6 = 6,   // 6.0 and later
};

// Asks the system afresh, unlike OsVersion, which the support classes ask. A system that does not
// tell its version counts as familyNT4.
OsFamily GetOsFamily();

// Whether the spooler may live in another session than the user: 5.1 and later.
inline bool hasSessions(OsFamily family) {
    return family == familyNT51 || family == familyNT6;
}

}  // namespace vok
