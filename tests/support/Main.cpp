#include <gtest/gtest.h>

#include <malloc.h>

namespace
{
/// Fails the test behind which the heap is found damaged. The test prefix asks for check bytes behind every block
/// (GlobalFlag), so an overrun of one byte is noticed too.
class HeapCheck : public ::testing::EmptyTestEventListener
{
    void OnTestEnd(const ::testing::TestInfo&) override
    {
        const int state = ::_heapchk();
        if (state != _HEAPOK && state != _HEAPEMPTY)
            ADD_FAILURE() << "the heap is damaged: _heapchk() gives " << state;
    }
};
} // namespace

int main(int argc, char** argv)
{
    ::testing::InitGoogleTest(&argc, argv);
    ::testing::UnitTest::GetInstance()->listeners().Append(new HeapCheck);
    return RUN_ALL_TESTS();
}
