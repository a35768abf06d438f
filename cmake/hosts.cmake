# Host names that a site may want to set for itself. They reach the sources as the generated header hosts.h.
set(KVUTIL_S3_SERVICE_DOMAIN "amazonaws.com" CACHE STRING "Domain whose hosts are S3 endpoints of the provider")
set(KVUTIL_S3_GLOBAL_HOST "s3.amazonaws.com" CACHE STRING "The provider's global S3 host")
set(KVUTIL_S3_GENERAL_DOMAIN "amazon.com" CACHE STRING "The provider's domain outside its services")
set(KVUTIL_STORAGE_HOST "storage.googleapis.com" CACHE STRING "First host with a token endpoint in new settings")
set(KVUTIL_IDENTITY_HOST "accounts.google.com" CACHE STRING "Second host with a token endpoint in new settings")
set(KVUTIL_TOKEN_ENDPOINT "https://www.googleapis.com/oauth2/v4/token" CACHE STRING
  "Token endpoint of both: https, at most 45 characters, with the path /oauth2/v4/token")
# A reserved domain that never resolves: whoever ships the library names servers of his own.
set(KVUTIL_UPDATE_HOST "updates.kvutil.invalid" CACHE STRING "HTTPS host with the versions.json of all products but one")
set(KVUTIL_SECOND_UPDATE_HOST "mediaferry.kvutil.invalid" CACHE STRING "HTTPS host with that of the product mediaferry")
configure_file(${CMAKE_CURRENT_LIST_DIR}/hosts.h.in ${PROJECT_BINARY_DIR}/generated/hosts.h)
