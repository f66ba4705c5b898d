#include "conformance/core/ScriptedRandom.h"

#include <cstring>

#include "conformance/core/Pattern.h"

namespace kit {

namespace {

enum class Mode {
    Seeded,
    Scripted,
    Failing,
};

struct Service {
    Mode mode = Mode::Seeded;
    std::uint64_t seed = 0;
    std::vector<std::uint64_t> script;
    std::vector<std::size_t> draws;
};

// One for each thread, so that functions can be called on several at once.
Service& TheService() {
    thread_local Service service;
    return service;
}

void Restart(Mode mode) {
    TheService().mode = mode;
    TheService().draws.clear();
}

// Stores a number as an integer of the buffer's size, so that scripts mean the same on every byte order.
void StoreNumber(std::uint64_t value, char* buffer, std::size_t count) {
    const auto value16 = static_cast<std::uint16_t>(value & 0xffff);
    const auto value32 = static_cast<std::uint32_t>(value & 0xffffffff);
    switch (count) {
        case 2:
            std::memcpy(buffer, &value16, 2);
            break;
        case 4:
            std::memcpy(buffer, &value32, 4);
            break;
        case 8:
            std::memcpy(buffer, &value, 8);
            break;
        default:
            std::memset(buffer, static_cast<int>(value & 0xff), count);
            break;
    }
}

}  // namespace

void ScriptedRandom::ServeSeed(std::uint64_t seed) {
    TheService().seed = seed;
    Restart(Mode::Seeded);
}

void ScriptedRandom::ServeScript(std::vector<std::uint64_t> values) {
    TheService().script = std::move(values);
    Restart(Mode::Scripted);
}

void ScriptedRandom::Fail() {
    Restart(Mode::Failing);
}

bool ScriptedRandom::Draw(char* buffer, std::size_t count) {
    Service& service = TheService();
    const std::size_t number = service.draws.size();
    service.draws.push_back(count);
    switch (service.mode) {
        case Mode::Seeded:
            StoreNumber(MixSeed(service.seed, number), buffer, count);
            return true;
        case Mode::Scripted:
            StoreNumber(number < service.script.size() ? service.script[number] : 0, buffer, count);
            return true;
        case Mode::Failing:
            break;
    }
    return false;
}

const std::vector<std::size_t>& ScriptedRandom::Draws() {
    return TheService().draws;
}

}  // namespace kit
