// The CDR encoder, decoder and size counter: Encode, EncodeAppend, EncodedSize and Decode.
#pragma once

#include "vorx/serialize/decode_status.h"
#include "vorx/serialize/decoder.h"
#include "vorx/serialize/encoder.h"
#include "vorx/serialize/traits.h"
