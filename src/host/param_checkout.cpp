#include "host/param_checkout.h"

ParamCheckout::ParamCheckout(PF_InData* inData) : inData_(inData) {
    checkOut(0);
}

ParamCheckout::~ParamCheckout() {
    checkIn();
}

PF_ParamDef ParamCheckout::read(A_long index) {
    if (index != index_ || time_ != inData_->current_time) {
        checkIn();
        checkOut(index);
    }
    return param_;
}

void ParamCheckout::checkOut(A_long index) {
    time_ = inData_->current_time;
    index_ = index;
    err_ = inData_->inter.checkout_param(inData_->effect_ref, index, time_, inData_->time_step,
                                         inData_->time_scale, &param_);
    if (err_ != 0)
        param_ = PF_ParamDef();
}

// A failed checkout needs no checkin.
void ParamCheckout::checkIn() {
    if (err_ == 0)
        err_ = inData_->inter.checkin_param(inData_->effect_ref, &param_);
    param_ = PF_ParamDef();
}
