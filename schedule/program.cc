#include "schedule/program.h"

#include "schedule/schedule_memory.h"

using ORVANE::MSTR;

namespace {

constexpr MSTR CProgram::*kTexts[] = {
    &CProgram::key,
    &CProgram::title,
    &CProgram::episode_title,
    &CProgram::description,
    &CProgram::genre,
    &CProgram::show_type,
    &CProgram::director,
    &CProgram::actors,
    &CProgram::publish_date,
    &CProgram::language,
    &CProgram::rating_bbfc,
    &CProgram::star_rating,
    &CProgram::black_and_white,
};

}  // namespace

CProgram::CProgram(const CProgram& other, CScheduleMemory& memory) {
  for (const auto text : kTexts) {
    if (!(other.*text).IsEmpty()) this->*text = memory.Keep(other.*text);
  }
}

void CProgram::Reset() {
  for (const auto text : kTexts) (this->*text).Reset();
}
