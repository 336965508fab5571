// Checks out parameters of the running effect at the time of the command, one at a time: a
// parameter is checked in before another one is read, and when this object is destroyed.
#pragma once

#include "sdk/pf_params.h"

class ParamCheckout {
public:
    // Checks out parameter 0, the effect's own layer. The record must outlive this object.
    explicit ParamCheckout(PF_InData* inData);
    ~ParamCheckout();
    ParamCheckout(const ParamCheckout&) = delete;
    ParamCheckout& operator=(const ParamCheckout&) = delete;

    // A copy of the parameter's definition with its value at the record's time; its pointers are
    // valid until the next parameter is read. All zero if the checkout fails. Reading the same
    // parameter at the same time again makes no call.
    PF_ParamDef read(A_long index);

    // The host's code for the parameter that was read last.
    PF_Err err() const { return err_; }

private:
    void checkOut(A_long index);
    void checkIn();

    PF_Err err_ = 0;
    PF_InData* inData_;
    PF_ParamDef param_ = PF_ParamDef();
    A_long time_ = 0; // of the checkout, in units of the record
    A_long index_ = 0;
};
