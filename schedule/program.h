// The details of a programme, which several broadcasts can share.
//
// Ownership: the texts stand in the schedule's memory.
#pragma once

#include "schedule/text.h"

struct CProgram {
  CText key;
  CText title;
  CText episode_title;
  CText description;
  CText genre;
  CText show_type;
  CText director;
  CText actors;
  CText publish_date;
  CText language;
  CText rating_bbfc;
  CText star_rating;
  CText black_and_white;  // a marker: set when it begins with 'Y'
};
