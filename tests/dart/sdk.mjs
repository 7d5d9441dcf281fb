// What the Dart files here use of Dart's and Flutter's own libraries.
import {readFileSync} from 'node:fs';

const sdk = JSON.parse(readFileSync(new URL('sdk_names.json', import.meta.url)));

// The names that an import brings, or nothing when the library is unknown.
export const namesOfLibrary = uri => sdk.libraries[uri];

// The members that a class has from one that it extends, or nothing when that
// one is unknown.
export const inheritedFrom = name => sdk.inherited[name];
