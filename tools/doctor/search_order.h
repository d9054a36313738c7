// Where the system looks for a library that is named without a folder.
#ifndef VOK_TOOLS_DOCTOR_SEARCH_ORDER_H
#define VOK_TOOLS_DOCTOR_SEARCH_ORDER_H

namespace vok::doctor {

// From now on this process searches libraries where the spooler does, which is a program of the
// system folder: neither beside this program nor in its current folder. Returns false where the
// system can't do that.
bool searchLikeTheSpooler();

}  // namespace vok::doctor

#endif
