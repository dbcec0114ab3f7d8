#include <DiskArbitration/Request.h>

#include <DiskArbitration/Holders.h>

#include <utility>

namespace da {

namespace {

constexpr uint64_t kForever = UINT64_MAX; ///< the user may be asked for a password

bool AppendArguments(sd_bus_message* message, const ServiceCall& call)
{
    return (!call.text || sd_bus_message_append(message, "s", call.text->c_str()) >= 0)
        && sd_bus_message_open_container(message, 'a', "{sv}") >= 0
        && (call.mountOptions.empty()
            || sd_bus_message_append(message, "{sv}", "options", "s", call.mountOptions.c_str()) >= 0)
        && (!call.isForced || sd_bus_message_append(message, "{sv}", "force", "b", 1) >= 0)
        && sd_bus_message_close_container(message) >= 0;
}

Message MessageFor(sd_bus* bus, const ServiceCall& call)
{
    sd_bus_message* made = nullptr;
    if (sd_bus_message_new_method_call(
            bus, &made, kDiskService, call.object.c_str(), call.interface, call.method)
        < 0)
        return nullptr;
    Message message(made);
    const bool isWhole
        = sd_bus_message_set_allow_interactive_authorization(made, 1) >= 0 && AppendArguments(made, call);
    return isWhole ? std::move(message) : nullptr;
}

}

bool Request::ask(sd_bus* bus) { return send(QuestionForObjects(bus), nullptr, OnObjects); }

bool Request::send(const Message& message, const Part* part, sd_bus_message_handler_t onAnswer)
{
    Answer& answer = fExpected.emplace_back(Answer { *this, part });
    sd_bus_slot* slot = nullptr;
    if (!message
        || sd_bus_call_async(
               sd_bus_message_get_bus(message.get()), &slot, message.get(), onAnswer, &answer, kForever)
            < 0) {
        fExpected.pop_back();
        return false;
    }
    answer.slot.reset(slot);
    ++fMissing;
    return true;
}

void Request::refuse(Refusal refusal)
{
    if (!fRefusal)
        fRefusal = std::move(refusal);
}

int Request::OnObjects(sd_bus_message* answer, void* expected, sd_bus_error* /*error*/)
{
    Request& self = static_cast<Answer*>(expected)->request;
    --self.fMissing;
    if (const sd_bus_error* const error = sd_bus_message_get_error(answer))
        self.refuse(RefusalFrom(*error));
    else
        self.carryOut(sd_bus_message_get_bus(answer), ReadObjects(answer));
    if (self.fMissing == 0)
        self.fWhenAnswered(self);
    return 1;
}

void Request::carryOut(sd_bus* bus, const ServedObjects& service)
{
    for (Part& part : fParts)
        part.mount = fVolumes.mountOf(part.device, part.deviceFile);
    const Plan plan = PlanFor(fDemand.wish, fParts, service);
    fBusy = plan.busy;
    if (plan.refusal)
        refuse(*plan.refusal);
    for (const ServiceCall& call : plan.calls) {
        if (!send(MessageFor(bus, call), call.part, OnDone))
            refuse({ kDAReturnNotReady });
    }
}

int Request::OnDone(sd_bus_message* answer, void* expected, sd_bus_error* /*error*/)
{
    const Answer& own = *static_cast<Answer*>(expected);
    Request& self = own.request;
    if (const sd_bus_error* const error = sd_bus_message_get_error(answer)) {
        Refusal refusal = RefusalFrom(*error);
        if (!self.fRefusal && self.fDemand.wish.verb == Verb::Unmount && refusal.status == kDAReturnBusy)
            self.fBusy = own.part;
        self.refuse(std::move(refusal));
    }
    if (--self.fMissing == 0)
        self.fWhenAnswered(self);
    return 1;
}

void Request::tell()
{
    if (fDemand.callback == nullptr)
        return;
    if (fRefusal && fBusy != nullptr && fBusy->mount)
        fRefusal->process = HolderOf(fVolumes.host(), *fBusy->mount);
    const auto dissenter = fRefusal ? MakeDissenter(*fRefusal) : nullptr;
    fDemand.callback(fDemand.disk.get(), dissenter.get(), fDemand.context);
}

}
