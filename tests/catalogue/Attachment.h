#ifndef AUTOOLS_TESTS_CATALOGUE_ATTACHMENT_H
#define AUTOOLS_TESTS_CATALOGUE_ATTACHMENT_H

#include "catalogue/CComponent.h"

namespace auttest
{
/// Counts when it is deleted.
class Attachment : public CComponentAttachment
{
public:
    explicit Attachment(int& deleted) : m_deleted(deleted) {}
    ~Attachment() override { ++m_deleted; }

private:
    int& m_deleted;
};
} // namespace auttest

#endif
