// Both forms of the extension of GNOME Shell, each in a shell that is played.
//
// usage: node --experimental-vm-modules extension-test.mjs SCRIPT MODULE
import assert from 'node:assert/strict';
import {test} from 'node:test';

import {client, load, PlayedShell} from './played-shell.mjs';

const stranger = ':1.666';
const denied = 'org.freedesktop.DBus.Error.AccessDenied';

// Values of the shell's own realm, whose types are not ours.
function same(actual, expected) {
    assert.equal(JSON.stringify(actual), JSON.stringify(expected));
}

async function enabled(form, file, change = () => {}) {
    const shell = new PlayedShell();
    change(shell);
    const extension = await load(form, file, shell);
    extension.enable();
    return {shell, extension};
}

async function attached(form, file, change) {
    const parts = await enabled(form, file, change);
    assert.equal((await parts.shell.call('Attach')).length, 3);
    assert.ok(parts.shell.exported.object.IsAttached);
    return parts;
}

const sentences = {
    async saysThatItIsReadyOnceItIsSwitchedOn(...which) {
        const {shell} = await enabled(...which);
        assert.equal(shell.exported.path, '/com/veltrane/Tavrine/Shell');
        same(shell.signals, [{to: null, signal: 'Ready', values: undefined}]);
    },

    async answersTheProgramThatIsInstalledBesideIt(...which) {
        await attached(...which);
    },

    async refusesWhoDoesNotOwnTheProgramsName(...which) {
        const {shell} = await enabled(...which);
        assert.equal(await shell.call('Attach', [], stranger), denied);
        shell.owner = null;
        assert.equal(await shell.call('Attach'), denied);
        assert.ok(!shell.exported.object.IsAttached);
    },

    async refusesAnotherProgramUnderOurName(...which) {
        const {shell} = await enabled(...which, played => { played.running.inode = 11; });
        assert.equal(await shell.call('Attach'), denied);
    },

    async answersAProgramThatAnUpdateHasReplaced(...which) {
        await attached(...which, shell => {
            Object.assign(shell.running, {inode: 11, nlink: 0});
            shell.link = '/usr/bin/tavrine (deleted)';
        });
    },

    async refusesWhatOnlyBearsTheNameOfAReplacedProgram(...which) {
        for (const wrong of [{nlink: 1}, {device: 2}, {uid: 1000}, {link: '/tmp/tavrine (deleted)'}]) {
            const {shell} = await enabled(...which, played => {
                const {link, ...facts} = {link: '/usr/bin/tavrine (deleted)', inode: 11, nlink: 0, ...wrong};
                Object.assign(played.running, facts);
                played.link = link;
            });
            assert.equal(await shell.call('Attach'), denied, JSON.stringify(wrong));
        }
    },

    async servesNobodyElse(...which) {
        const {shell} = await attached(...which);
        for (const [method, parameters] of [['GrabKey', ['<Super>v']], ['UngrabKey', [1]], ['WatchInput', [10]],
            ['ActivateWindow', [1]], ['TypeChord', [[118]]], ['TakePicture', [0]]])
            assert.equal(await shell.call(method, parameters, stranger), denied, method);
        assert.equal(await shell.call('Attach', [], stranger), denied);
        assert.ok(shell.exported.object.IsAttached);
        same([shell.grabbed.size, shell.typed.length, shell.written.length], [0, 0, 0]);
    },

    async servesNobodyBeforeHeIsAttached(...which) {
        const {shell} = await enabled(...which);
        assert.equal(await shell.call('GrabKey', ['<Super>v']), denied);
    },

    async tellsThePressesOfItsKeysToItsProgramAlone(...which) {
        const {shell} = await attached(...which);
        const [action] = await shell.call('GrabKey', ['<Super>v']);
        shell.display.tell('accelerator-activated', action, null, 99);
        shell.display.tell('accelerator-activated', action + 1, null, 99); // another program's
        same(shell.of('KeyPressed'), [{to: client, signal: 'KeyPressed', values: [action, 99, [3, 4, 0]]}]);
        assert.equal(shell.allowed.get(`external-${action}`), 1 | 2 | 16); // no lock screen, no dialog of the system
    },

    async grabsNoMoreThanThirtyTwoKeys(...which) {
        const {shell} = await attached(...which);
        same(await shell.call('GrabKey', ['taken']), [0]);
        for (let i = 0; i < 32; ++i)
            assert.notEqual((await shell.call('GrabKey', [`<Super>${i}`]))[0], 0);
        same(await shell.call('GrabKey', ['<Super>a']), [0]);
    },

    async givesEverythingBackWhenItIsSwitchedOff(...which) {
        const {shell, extension} = await attached(...which);
        await shell.call('GrabKey', ['<Super>v']);
        await shell.call('WatchInput', [10]);
        await shell.call('TypeChord', [[118]]);
        extension.disable();
        same([shell.grabbed.size, shell.watches.size, shell.sources.size, shell.display.handlers.size,
            shell.windowManager.handlers.size, shell.nameWatch, shell.exported], [0, 0, 0, 0, 0, null, null]);
        assert.equal(shell.allowed.get('external-1'), 0);
        same(shell.typed.at(-1), ['default', 'disposed']);
        same(shell.of('Gone'), [{to: client, signal: 'Gone', values: undefined}]);
        extension.enable();
        assert.equal(shell.of('Ready').length, 2);
        assert.equal((await shell.call('Attach')).length, 3);
    },

    async givesEverythingBackWhenItsProgramEnds(...which) {
        const {shell} = await attached(...which);
        await shell.call('GrabKey', ['<Super>v']);
        assert.equal(shell.nameWatch.name, client);
        shell.nameWatch.vanished();
        same([shell.grabbed.size, shell.display.handlers.size], [0, 0]);
        assert.equal(await shell.call('GrabKey', ['<Super>v']), denied);
    },

    async isNotAttachedByAnAnswerThatComesAfterItWasSwitchedOff(...which) {
        const {shell, extension} = await enabled(...which);
        const {object} = shell.exported;
        let answer;
        object.AttachAsync([], {get_sender: () => client, return_dbus_error: name => { answer = name; }});
        extension.disable();
        await shell.settle();
        assert.equal(answer, denied);
        assert.equal(shell.display.handlers.size, 0);
    },

    async typesAChordOnceNothingElseIsHeld(...which) {
        const {shell} = await attached(...which, played => { played.state = 1; });
        const typed = shell.call('TypeChord', [[65507, 118]]);
        await shell.pass(10);
        assert.equal(shell.typed.length, 0);
        shell.state = 0;
        await shell.pass(10);
        await typed;
        same(shell.typed.map(([, ...key]) => key),
            [[65507, 'down'], [118, 'down'], [118, 'up'], [65507, 'up']]);
    },

    async typesNoMoreThanFourKeys(...which) {
        const {shell} = await attached(...which);
        same(await shell.call('TypeChord', [[1, 2, 3, 4, 5]]), [false]);
        same(await shell.call('TypeChord', [[]]), [false]);
        assert.equal(shell.typed.length, 0);
    },

    async typesByTheSeatOfTheStageWhereTheShellHasIt(...which) {
        const {shell} = await attached(...which);
        shell.global.stage.context = {get_backend: () => shell.seatOfContext};
        await shell.call('TypeChord', [[118]]);
        assert.equal(shell.typed[0][0], 'context');
    },

    async takesAPictureOfEachMonitor(...which) {
        const {shell} = await attached(...which);
        same(await shell.call('TakePicture', [0]),
            [[[0, 0, 1280, 720, 12800], [1280, 0, 800, 600, 8000]]]);
        same(shell.written.map(each => each.of ?? each), [[0, 0, 1280, 720], [1280, 0, 800, 600], 'closed']);
    },
};

const [script, module] = process.argv.slice(2);
for (const [form, file] of [['script', script], ['module', module]]) {
    for (const [sentence, body] of Object.entries(sentences))
        test(`${form}: ${sentence}`, () => body(form, file));
}
