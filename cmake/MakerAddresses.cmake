# Where the maker is found on the net. The defaults are examples that lead nowhere; a release sets its own, for
# example cmake -DBRILLATRIX_WEB_ADDRESS=https://...
set(BRILLATRIX_HELP_ADDRESS "https://www.nexorvanta-software.example/brillatrix/help"
    CACHE STRING "Help page of the product")
set(BRILLATRIX_WEB_ADDRESS "https://www.nexorvanta-software.example"
    CACHE STRING "The maker's web site")
set(BRILLATRIX_SUPPORT_ADDRESS "mailto:support@nexorvanta-software.example"
    CACHE STRING "Where a user asks for support: a web page, or mailto: and a mail address")
set(BRILLATRIX_DOWNLOAD_ADDRESS "https://www.nexorvanta-software.example/brillatrix/download"
    CACHE STRING "Page of the newest version")
set(BRILLATRIX_UPDATE_ADDRESS "https://update.nexorvanta-software.example/brillatrix/version.txt"
    CACHE STRING "Answers 200 with the newest version's number alone, like 1.2.0.0, no line end; https only; empty: nobody is asked")

set(maker_addresses
    BX_HELP_ADDRESS="${BRILLATRIX_HELP_ADDRESS}"
    BX_WEB_ADDRESS="${BRILLATRIX_WEB_ADDRESS}"
    BX_SUPPORT_ADDRESS="${BRILLATRIX_SUPPORT_ADDRESS}"
    BX_DOWNLOAD_ADDRESS="${BRILLATRIX_DOWNLOAD_ADDRESS}"
    BX_UPDATE_ADDRESS="${BRILLATRIX_UPDATE_ADDRESS}")
