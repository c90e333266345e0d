#include "support.h"

namespace {

using CallScope = QxTest;

TEST_F(CallScope, EndsWhatIsLeftOverInIt) {
    {
        const qxCallScope scope;
        qxArray* kept = qxCreateDoubleScalar(1);
        qxArray* alsoMade = qxCreateCellMatrix(2, 2);
        qxSetCell(alsoMade, 0, qxCreateString("in a slot"));
        qxCreateSharedDataCopy(kept);
        qxDuplicateArray(alsoMade);
        qxDestroyArray(qxCreateSparse(2, 2, 2, qxREAL));
        EXPECT_EQ(qxLiveArrayCount() - liveBefore_, 6U);
    }
    EXPECT_EQ(qxLiveArrayCount(), liveBefore_);
}

TEST_F(CallScope, LetsGoOfWhatIsTakenOutOrPutIntoASlot) {
    qxArrayOwner parent = structOf(1, 1, {"f"});
    qxArrayOwner taken;
    qxArray* given = qxCreateDoubleScalar(1);
    {
        const qxCallScope scope;
        qxSetArrayScope(given, qxCALL_SCOPE);
        qxSetArrayScope(given, qxCALL_SCOPE);
        taken.reset(qxCreateDoubleScalar(2));
        qxCreateDoubleScalar(3);
        qxSetArrayScope(taken.get(), qxFREE_SCOPE);
        qxSetCell(parent.get(), 0, qxCreateDoubleScalar(8));
    }
    EXPECT_EQ(qxLiveArrayCount() - liveBefore_, 3U);
    EXPECT_EQ(*realOf<double>(taken), 2);
    EXPECT_EQ(*static_cast<double*>(qxGetField(parent.get(), 0, "f")->realData()), 8);
    qxSetArrayScope(taken.get(), qxCALL_SCOPE);
    EXPECT_EQ(qxLiveArrayCount() - liveBefore_, 3U) << "there is no call";
}

TEST_F(CallScope, Nests) {
    const qxCallScope outer;
    qxArray* outerArray = qxCreateDoubleScalar(1);
    {
        const qxCallScope inner;
        qxCreateDoubleScalar(2);
        // An array of the outer call may end while the inner one runs.
        qxDestroyArray(outerArray);
        EXPECT_EQ(qxLiveArrayCount() - liveBefore_, 1U);
    }
    EXPECT_EQ(qxLiveArrayCount(), liveBefore_);
    qxDestroyArray(qxCreateDoubleScalar(3));
}

TEST_F(CallScope, RestsWhileSuspended) {
    qxArrayOwner fromJava;
    qxArrayOwner takenOut;
    {
        const qxCallScope scope;
        qxArray* argument = qxCreateDoubleScalar(1);
        qxArray* ended = qxCreateDoubleScalar(2);
        {
            const qxCallScopeSuspension suspension;
            fromJava.reset(qxCreateDoubleScalar(3));
            qxSetArrayScope(argument, qxFREE_SCOPE);
            takenOut.reset(argument);
            qxDestroyArray(ended);
            {
                const qxCallScope calledBack;
                qxCreateDoubleScalar(4);
            }
            EXPECT_EQ(qxLiveArrayCount() - liveBefore_, 2U);
        }
        qxCreateDoubleScalar(5);
    }
    EXPECT_EQ(qxLiveArrayCount() - liveBefore_, 2U);
    EXPECT_EQ(*realOf<double>(fromJava) + *realOf<double>(takenOut), 4);
}

TEST_F(CallScope, SurvivesArraysMadeByAPayloadsEnd) {
    {
        const qxCallScope outer;
        {
            const qxCallScope inner;
            qxCreateOpaque("Handle", nullptr, [](void*) { qxCreateDoubleScalar(1); });
        }
        EXPECT_EQ(qxLiveArrayCount() - liveBefore_, 1U);
    }
    EXPECT_EQ(qxLiveArrayCount(), liveBefore_);
}

}  // namespace
