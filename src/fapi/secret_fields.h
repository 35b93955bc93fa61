#ifndef VRKT_FAPI_SECRET_FIELDS_H_
#define VRKT_FAPI_SECRET_FIELDS_H_

#include <algorithm>
#include <iterator>
#include <string_view>

#include "fapi/signal_layout.h"

// The fields that contain what a log must not give away, besides dumps and MAC addresses, which
// are secret by their form. A field that is not in this table is kept when a log is redacted.
inline constexpr std::string_view kSecretFields[] = {
    "arg",                      // of a fault of the firmware: any word
    "cluster_high",             // a part of the address of a NAN cluster
    "cluster_low",              //
    "ipv4destination_address",  //
    "spare_0",                  // nothing that is documented, as the following
    "spare_1",                  //
    "spare_2",                  //
    "spare_3",                  //
    "tester_reserved1",         //
    "tester_reserved2",         //
};

// Words can contain anything, except packet numbers.
consteval bool IsSecret(const FieldToken& field) {
  if (field.form == FieldRenderer::kWords) return !field.name.ends_with("sequence_number");
  return std::find(std::begin(kSecretFields), std::end(kSecretFields), field.name) !=
         std::end(kSecretFields);
}

#endif  // VRKT_FAPI_SECRET_FIELDS_H_
