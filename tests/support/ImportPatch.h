#ifndef AUTOOLS_TESTS_SUPPORT_IMPORTPATCH_H
#define AUTOOLS_TESTS_SUPPORT_IMPORTPATCH_H

namespace auttest
{
/// Puts another function in the place of one that the library imports, while this lives: for failures of the system
/// that nothing else can bring about.
class ImportPatch
{
public:
    template <typename Function>
    ImportPatch(const char* name, Function* replacement) : ImportPatch(name, reinterpret_cast<void*>(replacement))
    {
    }
    ~ImportPatch();
    ImportPatch(const ImportPatch&) = delete;
    ImportPatch& operator=(const ImportPatch&) = delete;

private:
    ImportPatch(const char* name, void* replacement);
    void write(void* function) const;

    void** m_slot = nullptr;
    void* m_original = nullptr;
};
} // namespace auttest

#endif
