// The Dart sources of a checkout: files, and the snippets in Markdown and in
// doc comments, each made a file of its own.
import {readdirSync, readFileSync} from 'node:fs';
import {join} from 'node:path';

// Paths below `folder` of the checkout `root`, relative to it.
function* filesBelow(root, folder) {
  for (const entry of readdirSync(join(root, folder), {withFileTypes: true})) {
    const path = folder ? `${folder}/${entry.name}` : entry.name;
    if (entry.isDirectory()) {
      if (!/^(build|ephemeral|node_modules|\..*)$/.test(entry.name)) {
        yield* filesBelow(root, path);
      }
    } else if (entry.isFile()) {
      yield path;
    }
  }
}

// All texts that the checks look at, by path.
export function readCheckout(root) {
  const texts = new Map();
  for (const path of filesBelow(root, '')) {
    const isOurs = /\.(dart|md)$/.test(path) || path.endsWith('pubspec.yaml') ||
      ['CMakeLists.txt', 'analysis_options.yaml', 'example/.metadata'].includes(path) ||
      /^(src|include|host|example\/linux)\/.*\.(h|cc|cmake)$/.test(path);
    if (isOurs) texts.set(path, readFileSync(join(root, path), 'utf8'));
  }
  return texts;
}

export const dartFilesIn = texts => [...texts]
  .filter(([path]) => path.endsWith('.dart')).map(([path, text]) => ({path, text}));

// The lines between ```dart and ```, with `mark` in front of each line.
function* fencedIn(text, mark) {
  const fence = new RegExp(`^${mark}\`\`\`dart\n((?:${mark}.*\n)*?)${mark}\`\`\``, 'gm');
  for (const match of text.matchAll(fence)) {
    yield {code: match[1].replace(new RegExp(`^${mark}`, 'gm'), ''),
           line: text.slice(0, match.index).split('\n').length};
  }
}

// A snippet in a doc comment stands in a function: what it leaves out is told
// here, by type.
const kGiven = {
  corvane: 'Corvane', path: 'String', microphone: 'Stream<Uint8List>',
};

function inFunction(code) {
  const given = Object.entries(kGiven)
    .filter(([name]) => new RegExp(`\\b${name}\\b`).test(code) &&
                        !new RegExp(`\\b[A-Z]\\w* ${name} =`).test(code));
  const parameters = given.map(([name, type]) => `${type} ${name}`).join(', ');
  const bytes = given.some(([name]) => name === 'microphone')
    ? "import 'dart:typed_data';\n" : '';
  return `${bytes}import 'package:corvane/corvane.dart';\n` +
    `Future<void> snippet(${parameters}) async {\n${code}}\n`;
}

// Whole programs in Markdown (they begin with an import) stay as they are.
export function* snippetsIn(texts) {
  for (const [path, text] of texts) {
    if (path.endsWith('.md')) {
      for (const {code, line} of fencedIn(text, '')) {
        const isWhole = code.startsWith('import ');
        yield {path: `${path}#L${line}.dart`, text: isWhole ? code : inFunction(code),
               code, isWhole};
      }
    } else if (/^lib\/.*\.dart$/.test(path)) {
      for (const {code, line} of fencedIn(text, '/// ?')) {
        yield {path: `${path}#L${line}.dart`, text: inFunction(code), code};
      }
    }
  }
}
