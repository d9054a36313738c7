// What the tests have seen of docs/windows.md's table.
#pragma once

#include <map>
#include <string>

namespace vok::test {

// By the row's first cell.
using Rows = std::map<std::string, std::string>;

// Takes the rows that a test's output tells.
void takeRows(const std::string& output, Rows& rows);

// As lines of the page's table of what was seen on Windows; without any, that there are none.
std::string asTable(const Rows& rows);

}  // namespace vok::test
