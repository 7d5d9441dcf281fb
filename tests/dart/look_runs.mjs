// Whether `isThere` tells what isn't there from what can't be looked at, tried
// out: the function is made JavaScript, and the files are told what to say.
import {javaScriptOf} from './dart_to_js.mjs';

class FileSystemException {}

class PathNotFoundException extends FileSystemException {}

// What the system says of a path, and what is to come of it.
const kCases = [
  ['a file', {type: 'file'}, true],
  ['a folder', {type: 'directory', thrown: new FileSystemException()}, true],
  ['nothing', {type: 'notFound', thrown: new PathNotFoundException()}, false],
  ['a folder that may not be searched',
   {type: 'notFound', thrown: new FileSystemException()}, 'thrown'],
  ['a file that came meanwhile', {type: 'notFound'}, true],
];

function isThereIn(texts, {type, thrown}) {
  const [dart] = /^Future<bool> isThere[^]*?^}\n/m.exec(texts.get('lib/src/capture_look.dart'));
  const given = {
    PathNotFoundException,
    FileSystemEntityType: {notFound: 'notFound'},
    FileSystemEntity: {type: async () => type},
    File: class {
      async open() {
        if (thrown) throw thrown;
        return {close: async () => {}};
      }
    },
  };
  return new Function(...Object.keys(given), `${javaScriptOf(dart)}\nreturn isThere;`)(
    ...Object.values(given));
}

// What was tried (a count), and what went otherwise (lines of text).
export async function lookRuns(texts) {
  const faults = [];
  for (const [what, said, wanted] of kCases) {
    const found = await isThereIn(texts, said)('/take.aac').catch(() => 'thrown');
    if (found !== wanted) faults.push(`isThere: ${what}: ${found}, not ${wanted}`);
  }
  return {count: kCases.length, faults};
}
