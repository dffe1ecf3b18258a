# Certificates for the loopback servers of the tests: a root of their own, a server certificate of it for the three service
# hosts, one more host and the address itself, and one that no root stands behind.

find_program(OPENSSL_PROGRAM openssl REQUIRED)
set(QUILLMATE_TEST_TLS_DIR "${CMAKE_BINARY_DIR}/tests/tls")

function(_openssl)
  execute_process(COMMAND ${OPENSSL_PROGRAM} ${ARGN} WORKING_DIRECTORY "${QUILLMATE_TEST_TLS_DIR}"
    RESULT_VARIABLE result OUTPUT_QUIET ERROR_VARIABLE errors)
  if(NOT result EQUAL 0)
    message(FATAL_ERROR "openssl ${ARGN} failed: ${errors}")
  endif()
endfunction()

set(_key -newkey ec -pkeyopt ec_paramgen_curve:prime256v1 -nodes)
set(_names "DNS:${QUILLMATE_LIVE_HOST},DNS:${QUILLMATE_STAGING_HOST},DNS:${QUILLMATE_DEV_HOST},DNS:other.example,IP:127.0.0.1")
file(MAKE_DIRECTORY "${QUILLMATE_TEST_TLS_DIR}")
set(_stamp "${QUILLMATE_TEST_TLS_DIR}/names.txt")
set(_made "")
if(EXISTS "${_stamp}")
  file(READ "${_stamp}" _made)
endif()
if(NOT _made STREQUAL _names)
  _openssl(req -x509 ${_key} -keyout ca.key -out ca.pem -days 3650 -subj "/CN=Quillmate tests"
    -addext "basicConstraints=critical,CA:TRUE" -addext "keyUsage=critical,keyCertSign")
  _openssl(req ${_key} -keyout server.key -out server.csr -subj "/CN=Quillmate test server")
  file(WRITE "${QUILLMATE_TEST_TLS_DIR}/server.ext"
    "subjectAltName=${_names}\nbasicConstraints=CA:FALSE\nextendedKeyUsage=serverAuth\n")
  _openssl(x509 -req -in server.csr -CA ca.pem -CAkey ca.key -CAcreateserial -out server.pem -days 3650
    -extfile server.ext)
  _openssl(req -x509 ${_key} -keyout stranger.key -out stranger.pem -days 3650 -subj "/CN=stranger"
    -addext "subjectAltName=${_names}")
  file(WRITE "${_stamp}" "${_names}")
endif()
