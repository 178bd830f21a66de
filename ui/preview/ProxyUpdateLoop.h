// How the Proxy Update Task serves one request: tile by tile, and what the display and the dialog are told.
// Proxy Update Task only.
#pragma once

// Renders the working request as far as it is not cancelled, and tells the display and the dialog.
void ServeRequest();
// Shows the original where the working request looks, and nothing more: the table is not there yet.
void ServeOriginal();
