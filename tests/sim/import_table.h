// The import table of a loaded module: what it imports, and what its slots point to.
#pragma once
#include <windows.h>

#include <string>
#include <string_view>
#include <vector>

namespace vok::test {

struct Import {
    std::string dll;   // as the module spells it
    std::string name;  // "#12" for an import by number
    void** slot = nullptr;
};

// Replaces imports of one module; the destructor puts back what was there. The module has to stay
// loaded for as long as this lives.
class ImportTable {
  public:
    explicit ImportTable(HMODULE module);
    ~ImportTable();
    ImportTable(const ImportTable&) = delete;
    ImportTable& operator=(const ImportTable&) = delete;

    const std::vector<Import>& imports() const { return imports_; }
    const Import* find(std::string_view name) const;  // null when not imported

    // Points the named import to `function`. False when the module does not import it.
    bool replace(std::string_view name, void* function);
    void set(const Import& import, void* function);

    // Puts back everything replaced so far.
    void restore();

  private:
    struct Replaced {
        void** slot;
        void* before;
    };
    std::vector<Import> imports_;
    std::vector<Replaced> replaced_;
};

}  // namespace vok::test
