#include "description.h"

namespace standin {
namespace {

// An array of records of `size` elements each.
template <class Record, class Read>
std::vector<Record> records(FrameReader& in, std::size_t size, Read read) {
  std::vector<Record> all(in.array());
  for (Record& record : all) {
    if (in.array() != size) throw WireError("a description has a wrong number of elements");
    read(record);
  }
  return all;
}

}  // namespace

Description read_description(FrameReader& in) {
  Description d;
  d.path = in.text();
  d.kind = in.text();
  d.type = in.text();
  d.admitted = in.text();
  d.units = in.text();
  if (!in.skip_nil()) d.dflt = in.text();
  d.text = in.text();
  d.secret = in.boolean();
  d.mandatory = in.boolean();
  d.keys = in.texts();
  d.labels = records<Description::Label>(in, 2, [&in](Description::Label& label) {
    label.text = in.text();
    label.description = in.text();
  });
  d.choices = records<Description::Choice>(in, 3, [&in](Description::Choice& choice) {
    choice.name = in.text();
    choice.mandatory = in.boolean();
    choice.description = in.text();
  });
  d.children = records<Description::Child>(in, 5, [&in](Description::Child& child) {
    child.name = in.text();
    child.kind = in.text();
    child.choice = in.text();
    child.mandatory = in.boolean();
    child.description = in.text();
  });
  return d;
}

}  // namespace standin
