# SPDX-License-Identifier: Apache-2.0
#
# Takes the UTF-8 checks out of generated message code: a reply whose texts are not valid UTF-8
# would be cut at the first of them, and Protocol Buffers would report it on standard error.
# Texts pass as they came instead.
#
# cmake -D "FILES=a.pb.cc;b.pb.cc" -P pass_text_unchecked.cmake

foreach(generated IN LISTS FILES)
  file(READ "${generated}" code)
  string(REGEX REPLACE "CHK_\\(::_pbi::VerifyUTF8\\([^;]*\\)\\);" "" code "${code}")
  string(REGEX REPLACE "::PROTOBUF_NAMESPACE_ID::internal::WireFormatLite::VerifyUtf8String\\([^;]*\\);"
         "" code "${code}")
  if(code MATCHES "U[Tt][Ff]8")
    message(WARNING "${generated} still checks texts: this version of protoc is not known here")
  endif()
  file(WRITE "${generated}" "${code}")
endforeach()
